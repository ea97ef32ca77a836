tqc_add_test(xlsx_test
  xlsx/CellFormsTest.cpp
  xlsx/OddWorkbookTest.cpp
  xlsx/PartsTest.cpp)
if(NOT WIN32)
  target_sources(xlsx_test PRIVATE xlsx/ReadAheadTest.cpp)
  target_link_libraries(xlsx_test PRIVATE tqc_port_faults)
endif()
