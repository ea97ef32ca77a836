# What is installed and where: component `runtime` (the shared library), `development` (headers, the static library,
# CMake package, pkg-config file) and, beside the program and the Python module, `tool` and `python`.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(tqc_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tqcAccess)
install(TARGETS tqcAccess EXPORT tqcAccessTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS tqcAccess_static EXPORT tqcAccess_staticTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
# Programs have this folder on their include path: apart from the classes everything is in tqcAccess/ below it.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tqcAccess COMPONENT development
  FILES_MATCHING PATTERN *.h PATTERN platform EXCLUDE)

# Two export sets: only the static library needs other packages, and only who links it has to have them.
foreach(set tqcAccessTargets tqcAccess_staticTargets)
  install(EXPORT ${set} NAMESPACE tqcAccess:: DESTINATION ${tqc_cmake_dir} COMPONENT development)
endforeach()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/tqcAccessConfig.cmake.in tqcAccessConfig.cmake
  INSTALL_DESTINATION ${tqc_cmake_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(tqcAccessConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/tqcAccessConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tqcAccessConfigVersion.cmake
  DESTINATION ${tqc_cmake_dir} COMPONENT development)

# Libs.private and not Requires.private: pkg-config wants the latter installed even for the shared library.
# The runtime of C++ is for programs in C.
set(tqc_private_libraries
  "$<$<OR:$<BOOL:${TQC_WITH_ZIP}>,$<BOOL:${TQC_WITH_XLSX}>>:$<IF:$<BOOL:${TQC_WITH_ISAL}>,-lisal,-lz>>"
  "$<$<BOOL:${TQC_WITH_ENCRYPTION}>:$<IF:$<BOOL:${WIN32}>,-lbcrypt,-lcrypto>>"
  -lstdc++ -lm -pthread)
# Relative, so that an installed tree can be moved.
file(RELATIVE_PATH tqc_prefix_from_pc
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/tqcAccess.pc.in tqcAccess.pc.generate @ONLY)
file(GENERATE OUTPUT tqcAccess.pc INPUT ${CMAKE_CURRENT_BINARY_DIR}/tqcAccess.pc.generate)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tqcAccess.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
