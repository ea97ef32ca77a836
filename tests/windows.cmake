# What only a build for Windows has to show.
add_test(NAME system_dlls_only COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/check_imports
  ${CMAKE_OBJDUMP} $<TARGET_FILE:tqcAccess>)
if(TARGET tqc)
  add_test(NAME program_dlls COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/check_imports
    ${CMAKE_OBJDUMP} $<TARGET_FILE:tqc> tqcAccess.dll)
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

# Suites that need nothing but what both systems have.
include(compound.cmake)
include(xlsx.cmake)
include(xls.cmake)
include(access.cmake)
tqc_add_test(codepage_test platform/CodePageTest.cpp)
