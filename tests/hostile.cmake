# Tests that read every kind of file.
if(TQC_WITH_ZIP AND TQC_WITH_XLSX AND TQC_WITH_XLS AND TQC_WITH_ACCESS AND TQC_WITH_ENCRYPTION)
  tqc_add_test(hostile_test hostile/HostileTest.cpp hostile/HostileRun.cpp hostile/PackageCases.cpp
                            hostile/XlsxCases.cpp hostile/XlsCases.cpp hostile/AccessCases.cpp)
endif()
