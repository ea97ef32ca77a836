# The program is driven as it was built, so there is nothing to test without it or its sources.
if(TARGET tqc AND TQC_WITH_ZIP AND TQC_WITH_XLSX AND TQC_WITH_XLS)
  tqc_add_test(tool_test tools/ConvertTest.cpp tools/EncodingTest.cpp tools/ForeignFormatsTest.cpp
    tools/ManyOutputsTest.cpp tools/PosixTest.cpp tools/ToolTest.cpp)
  target_compile_definitions(tool_test PRIVATE
    TQC_PROGRAM="$<TARGET_FILE:tqc>" TQC_SAMPLES="${PROJECT_SOURCE_DIR}/examples/data"
    TQC_COMPLETIONS="${PROJECT_SOURCE_DIR}/completions" TQC_MANUAL="${PROJECT_SOURCE_DIR}/man/tqc.1")
  target_link_libraries(tool_test PRIVATE util) # openpty, forkpty
  if(TQC_WITH_ENCRYPTION)
    target_compile_definitions(tool_test PRIVATE TQC_WITH_ENCRYPTION)
  endif()
  if(TQC_WITH_SQLITE)
    target_compile_definitions(tool_test PRIVATE TQC_WITH_SQLITE)
    target_link_libraries(tool_test PRIVATE SQLite::SQLite3)
  endif()
  if(TQC_WITH_ACCESS)
    target_compile_definitions(tool_test PRIVATE TQC_WITH_ACCESS)
  endif()
  add_dependencies(tool_test tqc)
endif()

# The commands of the cookbook print what it shows.
find_package(Python3 COMPONENTS Interpreter)
find_program(TQC_SQLITE3 sqlite3)
mark_as_advanced(TQC_SQLITE3)
if(TARGET tqc AND TQC_WITH_XLSX AND TQC_WITH_XLS AND TQC_WITH_ACCESS AND TQC_WITH_SQLITE AND Python3_FOUND AND TQC_SQLITE3)
  add_test(NAME cookbook COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/check_cookbook
    $<TARGET_FILE:tqc> ${PROJECT_SOURCE_DIR}/docs/cookbook.md)
  set_tests_properties(cookbook PROPERTIES TIMEOUT 300)
endif()
