if(TQC_WITH_ZIP AND TQC_WITH_XLSX AND TQC_WITH_XLS AND TQC_WITH_ACCESS AND TQC_WITH_ENCRYPTION)
  tqc_add_test(source_faults_test faults/SourceFaultsTest.cpp support/CompoundBuilder.cpp support/Encryptor.cpp
                                  support/ZipWriter.cpp)
  target_link_libraries(source_faults_test PRIVATE tqc_system_faults OpenSSL::Crypto)
  target_compile_definitions(source_faults_test PRIVATE TQC_SAMPLES="${PROJECT_SOURCE_DIR}/examples/data")
endif()
