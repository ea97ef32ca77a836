# The zip for Windows (`make windows`): the DLL with the headers and the import library, the program and its manual.
install(TARGETS tqcAccess RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION include/tqcAccess
  FILES_MATCHING PATTERN *.h PATTERN platform EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION doc)

if(TQC_BUILD_TOOL)
  install(TARGETS tqc RUNTIME DESTINATION bin)
  find_program(TQC_MANDOC mandoc REQUIRED)
  mark_as_advanced(TQC_MANDOC)
  set(manual ${PROJECT_BINARY_DIR}/tqc.html)
  add_custom_command(OUTPUT ${manual} DEPENDS ${PROJECT_SOURCE_DIR}/man/tqc.1
    COMMAND ${TQC_MANDOC} -T html ${PROJECT_SOURCE_DIR}/man/tqc.1 > ${manual} VERBATIM)
  add_custom_target(tqc_manual ALL DEPENDS ${manual})
  install(FILES ${manual} DESTINATION doc)
endif()

# It needs what is installed, and not every test.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_GENERATOR ZIP)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_FILE_NAME tqcAccess-${PROJECT_VERSION}-windows-x64)
include(CPack)
