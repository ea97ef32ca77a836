# Debian packages of the components, by `cpack -G DEB` in a build with the prefix /usr (`make package`).
set(TQC_PACKAGE_CONTACT "tqcAccess developers <developers@tqcaccess.invalid>" CACHE STRING
  "The maintainer that packages name")

# The first line of each package description is that of the project; the texts below follow it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${TQC_PACKAGE_CONTACT})
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_COMPONENTS_ALL runtime development)
if(TQC_BUILD_TOOL)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
if(TARGET tqcaccess_python_installed)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
# The program's own library is not installed when its dependencies are looked up.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_TQC_SOURCE_DIR ${PROJECT_SOURCE_DIR})
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DebianFiles.cmake)

set(tqc_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtqcaccess${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"The shared library. It reads comma- and tab-separated text, fixed-length text,
packages, workbooks and databases one row at a time, converts between UTF-8 and
the usual double-byte code pages, and writes CSV.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtqcaccess-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# What the static library was built to use; programs that link it need the development packages.
set(tqc_static_needs)
if(TQC_WITH_ZIP OR TQC_WITH_XLSX)
  list(APPEND tqc_static_needs ${tqc_inflate_package})
endif()
if(TQC_WITH_ENCRYPTION)
  list(APPEND tqc_static_needs libssl-dev)
endif()
list(JOIN tqc_static_needs ", " tqc_static_needs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} ${tqc_version}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "${tqc_static_needs}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"What a program needs to be built with the library: headers, static library,
CMake package and pkg-config file. Linking the static library needs the
suggested packages as well.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tqc)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} ${tqc_version}")
set(CPACK_DEBIAN_TOOL_DESCRIPTION
"The program. It shows and converts comma- and tab-separated text, fixed-length
text, packages, workbooks and databases on the command line.")

# The scripts of the package make and remove the files that Python compiles.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-tqcaccess)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} ${tqc_version}, ${tqc_python_needed}")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-pandas)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_LIST_DIR}/python/postinst;${CMAKE_CURRENT_LIST_DIR}/python/prerm")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"The Python module. It gives the rows of text, workbooks, databases and packages
as typed values, Arrow streams and data frames of pandas.")
include(CPack)
