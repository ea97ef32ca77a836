# tqc_fault_injection: link it to a test program and the faults of support/Faults.h stand in for its system calls.
add_library(tqc_fault_injection OBJECT support/Faults.cpp)
target_include_directories(tqc_fault_injection PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tqc_fault_injection PRIVATE tqc_options)

# Leads calls of `name`, which is what the headers make of `call`, to the wrapper of `call`.
function(tqc_wrap_alias name call)
  target_link_options(tqc_fault_injection INTERFACE -Wl,--wrap=${name} -Wl,--defsym=__wrap_${name}=__wrap_${call})
endfunction()

foreach(call open openat close read pread write pwrite lseek stat lstat fstat fstatat ftruncate flock fcntl dup
             unlink unlinkat rmdir mkdir mkdirat opendir fdopendir readdir)
  target_link_options(tqc_fault_injection INTERFACE -Wl,--wrap=${call})
endforeach()
# With 64-bit file offsets asked for by name, and with _FORTIFY_SOURCE.
foreach(call open openat pread pwrite lseek stat lstat fstat fstatat ftruncate fcntl readdir)
  tqc_wrap_alias(${call}64 ${call})
endforeach()
tqc_wrap_alias(__open_2 open)
tqc_wrap_alias(__open64_2 open)
tqc_wrap_alias(__read_chk read)
