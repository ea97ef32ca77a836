tqc_add_test(access_test
  access/LayoutTest.cpp
  access/ListingTest.cpp
  access/ValuesTest.cpp)
if(TQC_WITH_ENCRYPTION)
  target_sources(access_test PRIVATE access/EncryptionTest.cpp)

  # Writes the databases of examples/data; scripts/make_samples runs it.
  add_executable(make_access_samples EXCLUDE_FROM_ALL ${PROJECT_SOURCE_DIR}/scripts/make_access_samples.cpp)
  target_link_libraries(make_access_samples PRIVATE file_writers tqc_options)
endif()
