tqc_add_test(codepage_test platform/CodePageTest.cpp)
tqc_add_test(files_test platform/FilesTest.cpp)
target_link_libraries(files_test PRIVATE tqc_fault_injection)
