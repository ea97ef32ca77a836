tqc_add_test(xls_test xls/OddXlsTest.cpp)
if(TQC_WITH_ENCRYPTION)
  target_sources(xls_test PRIVATE xls/EncryptedXlsTest.cpp support/CompoundBuilder.cpp support/Encryptor.cpp
                                  support/ZipWriter.cpp)
  target_link_libraries(xls_test PRIVATE OpenSSL::Crypto)
endif()
