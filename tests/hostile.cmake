# One table for each kind of file; a kind that this build cannot read has none.
if(TQC_WITH_ZIP)
  tqc_add_test(hostile_test hostile/HostileTest.cpp hostile/PackageCases.cpp support/ZipWriter.cpp)
  if(TQC_WITH_XLSX)
    target_sources(hostile_test PRIVATE hostile/XlsxCases.cpp)
    target_compile_definitions(hostile_test PRIVATE TQC_TEST_XLSX)
  endif()
endif()
