# Puts into the staged packages what Debian wants beside the files that any installation has: copyright, changelogs, a
# compressed manual page. CPack runs it once, between installation and packing.
find_program(gzip gzip REQUIRED)

function(compress file target)
  execute_process(COMMAND ${gzip} -9nc ${file} OUTPUT_FILE ${target} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(source ${CPACK_TQC_SOURCE_DIR})
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  set(doc ${share}/doc/${package})
  file(MAKE_DIRECTORY ${doc})
  file(COPY_FILE ${source}/LICENSE ${doc}/copyright)
  file(CHMOD ${doc}/copyright PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  compress(${source}/CHANGELOG.md ${doc}/changelog.gz)
  file(WRITE ${doc}/changelog.Debian
    "tqcaccess (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
    "  * Packages of version ${CPACK_PACKAGE_VERSION}; changelog.gz tells what is new.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  Wed, 25 Nov 2026 00:00:00 +0000\n")
  compress(${doc}/changelog.Debian ${doc}/changelog.Debian.gz)
  file(REMOVE ${doc}/changelog.Debian)
  file(GLOB manuals ${share}/man/man1/*.1)
  foreach(manual IN LISTS manuals)
    compress(${manual} ${manual}.gz)
    file(REMOVE ${manual})
  endforeach()
endforeach()
