# tqc_libzip: the zip library, for the provider alone. Looked up by hand: the package files that Debian gives with it
# ask for programs that are not needed here. Programs that link the static library use this file too.
include(FindPackageHandleStandardArgs)
find_path(TQC_LIBZIP_INCLUDE_DIR zip.h)
find_library(TQC_LIBZIP_LIBRARY zip)
mark_as_advanced(TQC_LIBZIP_INCLUDE_DIR TQC_LIBZIP_LIBRARY)
find_package_handle_standard_args(TqcLibZip
  REQUIRED_VARS TQC_LIBZIP_LIBRARY TQC_LIBZIP_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "install libzip-dev, or build without packages (-DTQC_WITH_ZIP=OFF)")
if(TqcLibZip_FOUND AND NOT TARGET tqc_libzip)
  add_library(tqc_libzip UNKNOWN IMPORTED GLOBAL)
  set_target_properties(tqc_libzip PROPERTIES
    IMPORTED_LOCATION ${TQC_LIBZIP_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${TQC_LIBZIP_INCLUDE_DIR})
endif()
