tqc_add_test(automation_test
  automation/ComTest.cpp automation/ValueTextTest.cpp automation/VariantTest.cpp)
target_link_options(automation_test PRIVATE -Wl,--wrap=malloc)
