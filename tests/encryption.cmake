tqc_add_test(system_crypto_test encryption/SystemCryptoTest.cpp)
tqc_add_test(encryption_test encryption/EncryptionTest.cpp)
target_link_libraries(encryption_test PRIVATE OpenSSL::Crypto)
target_link_options(encryption_test PRIVATE -Wl,--wrap=EVP_DigestFinal_ex)
