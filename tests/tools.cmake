# The program is driven as it was built, so there is nothing to test without it.
if(TARGET tqc)
  tqc_add_test(tool_test tools/ToolTest.cpp)
  target_compile_definitions(tool_test PRIVATE
    TQC_PROGRAM="$<TARGET_FILE:tqc>" TQC_SAMPLES="${PROJECT_SOURCE_DIR}/examples/data")
  add_dependencies(tool_test tqc)
endif()
