# Programs of others: they find the installed library in each of the usual ways, and load and unload it.
add_test(NAME exported_symbols COMMAND ${PROJECT_SOURCE_DIR}/scripts/check_exports $<TARGET_FILE:tqcAccess>)

# A program that is built without the sanitizers or the counters cannot link a library that has them.
if(NOT PROJECT_IS_TOP_LEVEL OR TQC_SANITIZE OR CMAKE_CXX_FLAGS MATCHES "coverage|fsanitize")
  return()
endif()
add_executable(load_unload consumers/load_unload.cpp)
target_link_libraries(load_unload PRIVATE tqc_options ${CMAKE_DL_LIBS})
add_test(NAME load_unload COMMAND load_unload $<TARGET_FILE:tqcAccess>)

set(consumers ${CMAKE_CURRENT_BINARY_DIR}/consumers)
add_test(NAME consumer_install
  COMMAND ${CMAKE_COMMAND} -E env --unset=DESTDIR sh -e -c
    "rm -rf $1; for part in runtime development tool python; do $0 --install $2 --prefix $1 --component $part; done"
    ${CMAKE_COMMAND} ${consumers}/prefix ${PROJECT_BINARY_DIR})
set_tests_properties(consumer_install PROPERTIES FIXTURES_SETUP installed_library)
set(manifest ${PROJECT_BINARY_DIR}/install_manifest)
add_test(NAME consumer_uninstall
  COMMAND ${CMAKE_COMMAND} -E env --unset=DESTDIR sh -e -c
    "$0 $2_runtime.txt $2_development.txt $2_tool.txt $2_python.txt; test -z \"$(find $1 -not -type d -o -iname tqcAccess)\""
    ${PROJECT_SOURCE_DIR}/scripts/uninstall ${consumers}/prefix ${manifest})
set_tests_properties(consumer_uninstall PROPERTIES FIXTURES_CLEANUP installed_library)

if(TARGET tqc)
  set(installed_program ${consumers}/prefix/${CMAKE_INSTALL_BINDIR}/tqc)
  add_test(NAME runpath COMMAND sh -e -c "$0 \"$@\"; $1 --version" ${PROJECT_SOURCE_DIR}/scripts/check_runpath
    ${installed_program} $<TARGET_FILE:tqc> $<TARGET_FILE:tqcAccess> $<TARGET_FILE:load_unload>)
  set_tests_properties(runpath PROPERTIES FIXTURES_REQUIRED installed_library)
endif()

if(TARGET tqcaccess_python_installed)
  add_test(NAME consumer_python COMMAND sh -e -c
    "$0 $1/tqcaccess/_tqcaccess*.so; PYTHONPATH=$1 $2 -c 'import sys, tqcaccess; tqcaccess.tables(sys.argv[1])' $3"
    ${PROJECT_SOURCE_DIR}/scripts/check_runpath ${consumers}/prefix/${tqc_python_dir} ${Python3_EXECUTABLE}
    ${PROJECT_SOURCE_DIR}/examples/data/prices-utf8.csv)
  set_tests_properties(consumer_python PROPERTIES FIXTURES_REQUIRED installed_library)
endif()

# tqc_add_consumer(NAME option...): configures, builds and runs the project in tests/consumers with these options.
function(tqc_add_consumer name)
  add_test(NAME consumer_${name}
    COMMAND ${CMAKE_CTEST_COMMAND} --build-and-test ${CMAKE_CURRENT_SOURCE_DIR}/consumers ${consumers}/${name}
      --build-generator ${CMAKE_GENERATOR} --build-options
        -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} -DTQC_WITH_CCACHE=${TQC_WITH_CCACHE} ${ARGN})
  set_tests_properties(consumer_${name} PROPERTIES FIXTURES_REQUIRED installed_library TIMEOUT 300
    ENVIRONMENT CMAKE_BUILD_PARALLEL_LEVEL=2)
endfunction()
tqc_add_consumer(find_package -DCMAKE_PREFIX_PATH=${consumers}/prefix -DSTATIC_COMPONENT=static)
# Without a provider, so that this is quick and proves that the library builds and works without them.
tqc_add_consumer(add_subdirectory -DTQC_SOURCE_DIR=${PROJECT_SOURCE_DIR} -DTQC_BUILD_TOOL=OFF -DTQC_WITH_ZIP=OFF
  -DTQC_WITH_XLSX=OFF -DTQC_WITH_XLS=OFF -DTQC_WITH_ACCESS=OFF -DTQC_WITH_ENCRYPTION=OFF)

find_program(TQC_PKG_CONFIG pkg-config)
mark_as_advanced(TQC_PKG_CONFIG)
if(TQC_PKG_CONFIG)
  add_test(NAME consumer_pkg_config COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/consumers/pkg_config
    ${consumers}/prefix ${CMAKE_INSTALL_LIBDIR} ${CMAKE_CXX_COMPILER} ${consumers}/pkg_config)
  set_tests_properties(consumer_pkg_config PROPERTIES FIXTURES_REQUIRED installed_library)
endif()
