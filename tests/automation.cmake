tqc_add_test(automation_test
  automation/AutomationTest.cpp)
target_link_options(automation_test PRIVATE -Wl,--wrap=malloc)
