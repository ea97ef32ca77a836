tqc_add_test(xlsx_test
  xlsx/CellFormsTest.cpp
  xlsx/OddWorkbookTest.cpp
  xlsx/PartsTest.cpp
  xlsx/ReadAheadTest.cpp)
