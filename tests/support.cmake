# Faults of support/Faults.h in place of calls: a test program links one of the two.
function(tqc_add_faults name source)
  add_library(${name} OBJECT support/Faults.cpp ${source})
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE tqcAccess_static tqc_options)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src)
endfunction()

# tqc_port_faults: functions of the port, by the names that the compiler makes of them.
tqc_add_faults(tqc_port_faults support/PortFaults.cpp)
if(WIN32)
  set(dword m)
  set(long x)
else()
  set(dword j)
  set(long l)
endif()
set(text RKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE)
foreach(name 4OpenE${text}RKNS1_8SOpeningER${long}Rb 4ReadE${long}Pv${dword}R${dword} 5WriteE${long}PKv${dword}R${dword}
             4SeekE${long}${long}NS1_7EOriginER${long} 17MakePrivateFolderE${text})
  target_link_options(tqc_port_faults INTERFACE -Wl,--wrap=_ZN4NSTQ8Platform4Port${name})
endforeach()
if(WIN32)
  return()
endif()

# tqc_system_faults: system calls.
tqc_add_faults(tqc_system_faults support/SystemFaults.cpp)

# Leads calls of `name`, which is what the headers make of `call`, to the wrapper of `call`.
function(tqc_wrap_alias name call)
  target_link_options(tqc_system_faults INTERFACE -Wl,--wrap=${name} -Wl,--defsym=__wrap_${name}=__wrap_${call})
endfunction()

foreach(call open openat close read pread write pwrite lseek stat lstat fstat fstatat ftruncate flock fcntl dup
             unlink unlinkat rmdir mkdir mkdirat opendir fdopendir readdir)
  target_link_options(tqc_system_faults INTERFACE -Wl,--wrap=${call})
endforeach()
# With 64-bit file offsets asked for by name, and with _FORTIFY_SOURCE.
foreach(call open openat pread pwrite lseek stat lstat fstat fstatat ftruncate fcntl readdir)
  tqc_wrap_alias(${call}64 ${call})
endforeach()
tqc_wrap_alias(__open_2 open)
tqc_wrap_alias(__open64_2 open)
tqc_wrap_alias(__read_chk read)
