# Databases built byte by byte; also for the benchmarks, the samples and the seeds of the fuzz target.
add_library(access_writer STATIC
  support/AccessPages.cpp
  support/AccessTable.cpp
  support/AccessValues.cpp
  support/AccessWriter.cpp)
target_include_directories(access_writer PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(access_writer PRIVATE tqcAccess_static tqc_options)

tqc_add_test(access_test
  access/LayoutTest.cpp
  access/ListingTest.cpp
  access/ValuesTest.cpp)
target_link_libraries(access_test PRIVATE access_writer)
if(TQC_WITH_ENCRYPTION)
  target_sources(access_test PRIVATE access/EncryptionTest.cpp support/CompoundBuilder.cpp
                                     support/Encryptor.cpp)
  target_link_libraries(access_test PRIVATE OpenSSL::Crypto)

  # Writes the databases of examples/data; scripts/make_samples runs it.
  add_executable(make_access_samples EXCLUDE_FROM_ALL ${PROJECT_SOURCE_DIR}/scripts/make_access_samples.cpp
    support/CompoundBuilder.cpp support/Encryptor.cpp)
  target_link_libraries(make_access_samples PRIVATE access_writer tqc_options OpenSSL::Crypto)
endif()
