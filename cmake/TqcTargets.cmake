# What every target of the project is compiled with.

add_library(tqc_options INTERFACE)
target_compile_options(tqc_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping copies where a literal is put before a std::string.
  target_compile_options(tqc_options INTERFACE -Wno-restrict)
endif()
if(TQC_WARNINGS_AS_ERRORS)
  target_compile_options(tqc_options INTERFACE -Werror)
endif()
if(TQC_SANITIZE)
  target_compile_options(tqc_options INTERFACE -fsanitize=${TQC_SANITIZE} -fno-sanitize-recover=all
                                               -fno-omit-frame-pointer)
  target_link_options(tqc_options INTERFACE -fsanitize=${TQC_SANITIZE})
endif()
