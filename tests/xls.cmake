tqc_add_test(xls_test xls/OddXlsTest.cpp)
if(TQC_WITH_ENCRYPTION)
  target_sources(xls_test PRIVATE xls/EncryptedXlsTest.cpp)
endif()
