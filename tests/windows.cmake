# What only a build for Windows has to show.
add_test(NAME system_dlls_only COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/check_imports
  ${CMAKE_OBJDUMP} $<TARGET_FILE:tqcAccess>)
if(TQC_WITH_ACCESS)
  add_test(NAME c_consumer COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/c_consumer ${CMAKE_C_COMPILER}
    ${PROJECT_SOURCE_DIR} $<TARGET_FILE:tqcAccess> $<TARGET_LINKER_FILE:tqcAccess> ${CMAKE_CROSSCOMPILING_EMULATOR})
endif()
if(TARGET tqc)
  add_test(NAME program_dlls COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/check_imports
    ${CMAKE_OBJDUMP} $<TARGET_FILE:tqc> tqcAccess.dll)
  set(TQC_LINUX_PROGRAM ${PROJECT_SOURCE_DIR}/build/release/tools/tqc/tqc
    CACHE FILEPATH "The program of Linux, with which that of Windows is compared")
  add_test(NAME same_as_on_linux COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/compare_programs
    ${PROJECT_SOURCE_DIR}/examples/data ${TQC_LINUX_PROGRAM} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:tqc>)
endif()

# Programs that include the header of the system before and after those of the library.
foreach(order FIRST LAST)
  add_executable(system_header_${order} windows/system_header.cpp)
  target_compile_definitions(system_header_${order} PRIVATE SYSTEM_${order})
  target_link_libraries(system_header_${order} PRIVATE tqcAccess tqc_options)
  add_test(NAME system_header_${order} COMMAND system_header_${order})
endforeach()

if(TQC_WITH_ENCRYPTION)
  tqc_add_test(system_crypto_test encryption/SystemCryptoTest.cpp)
endif()
# The tests encrypt by libcrypto, which is not there; what decrypts is the same on both systems but for the suite above.
set(TQC_WITH_ENCRYPTION OFF)

if(TQC_WITH_SYSTEM_ADO)
  # The other suites read workbooks and databases by the library's own providers, which none of its readers then uses.
  return()
endif()
tqc_add_test(system_ado_test windows/SystemAdoTest.cpp)
target_compile_definitions(system_ado_test PRIVATE
  TQC_TEST_DATABASE="${PROJECT_SOURCE_DIR}/examples/data/stock.accdb")
target_link_libraries(system_ado_test PRIVATE system_ado)
# tqc with it, where the system lacks what it needs: only the DLL beside the program differs.
if(TARGET tqc)
  add_library(tqcAccess_with_system_ado SHARED $<TARGET_OBJECTS:system_ado> $<TARGET_OBJECTS:system_ado_classes>
    $<FILTER:$<TARGET_OBJECTS:tqcAccess_objects>,EXCLUDE,/AdoClasses>)
  get_target_property(libraries tqcAccess LINK_LIBRARIES)
  target_link_libraries(tqcAccess_with_system_ado PRIVATE ${libraries})
  set(folder ${PROJECT_BINARY_DIR}/bin/system_ado)
  set_target_properties(tqcAccess_with_system_ado PROPERTIES PREFIX "" OUTPUT_NAME tqcAccess LINKER_LANGUAGE CXX
    RUNTIME_OUTPUT_DIRECTORY ${folder} ARCHIVE_OUTPUT_DIRECTORY ${folder})
  add_dependencies(tqcAccess_with_system_ado tqcAccess_objects system_ado system_ado_classes tqc)
  add_custom_command(TARGET tqcAccess_with_system_ado POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:tqc> ${folder} VERBATIM)
  add_test(NAME program_with_system_ado
    COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} ${folder}/tqc.exe ${PROJECT_SOURCE_DIR}/examples/data/prices.xlsx)
  set_tests_properties(program_with_system_ado PROPERTIES PASS_REGULAR_EXPRESSION
    "tqc: .*prices.xlsx: the ADO of this system is not installed correctly")
endif()

# Suites of both systems. What runs on Linux only:
# - files_test, package_test and source_faults_test put faults in place of its system calls;
# - tool_test starts tqc with fork, and hostile_test limits and measures what it starts;
# - ReadAheadTest.cpp counts threads in /proc and asks for the signals that are blocked;
# - PackagePreparationTest.cpp limits open files and plants links;
# - encryption_test encrypts by libcrypto, which Debian does not have for Windows;
# - the fuzz targets and the replay of their seeds map memory and stand in for read;
# - all but long random texts of one code page of text_ansi_test and text_utf8_test compare the kernels with the plain
#   readers for minutes, and nothing in them is of the system;
# - the tests of installed files and of symbols are about ELF, pkg-config and dlopen.
include(support.cmake)
include(compound.cmake)
include(xlsx.cmake)
include(xls.cmake)
include(access.cmake)
include(ado.cmake)
include(automation.cmake)
include(facade.cmake)
include(text.cmake)
set_tests_properties(text_ansi_test text_utf8_test PROPERTIES ENVIRONMENT
  GTEST_FILTER=Page/CDifferential.RandomLongTexts/932)
tqc_add_test(codepage_test platform/CodePageTest.cpp)
tqc_add_test(sourceinfo_test sourceinfo/SourceDataInfoTest.cpp)
tqc_add_test(framework_test framework/FacadeTest.cpp)
tqc_add_test(fixed_text_test text/FixDataAccessTest.cpp)
tqc_add_test(output_test output/CsvOutPutTest.cpp support/CTextBeforeTheEnd.cpp)
foreach(test fixed_text_test sourceinfo_test framework_test output_test)
  target_link_libraries(${test} PRIVATE tqc_port_faults)
endforeach()
# Names with quotes, and paths that any number of slashes may begin, are of Linux.
set_tests_properties(ado_test PROPERTIES ENVIRONMENT
  GTEST_FILTER=-Sources.StringsHaveProviderPathAndPropertiesAndOpenTheFile)
set_tests_properties(sourceinfo_test PROPERTIES ENVIRONMENT
  GTEST_FILTER=-SourceDataInfo.ARefusedPathLeavesNoStaleDescription)
# The runtime of the compiler, which is in the program there, does not bear a malloc that fails.
set_tests_properties(automation_test PROPERTIES ENVIRONMENT
  GTEST_FILTER=-Bstr.IsConvertedFromAnsiUnlessMemoryRunsOut)
