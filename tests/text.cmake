# The differential test is built once per grammar, so that ctest runs the two side by side.
foreach(grammar ansi utf8)
  tqc_add_test(text_${grammar}_test text/DifferentialTest.cpp)
  target_link_libraries(text_${grammar}_test PRIVATE tqc_port_faults)
  target_compile_definitions(text_${grammar}_test PRIVATE TQC_TEST_UTF8=$<STREQUAL:${grammar},utf8>)
endforeach()

tqc_add_test(text_test text/PlainRecordsTest.cpp text/TablesTest.cpp)
target_link_libraries(text_test PRIVATE tqc_port_faults)
