tqc_add_test(ado_test
  ado/AdoLayerTest.cpp
  ado/ReaderTest.cpp
  ado/SourceStringsTest.cpp)
target_link_libraries(ado_test PRIVATE tqc_port_faults)
if(TQC_WITH_XLSX AND TQC_WITH_ACCESS)
  tqc_add_test(plain_texts_test ado/PlainTextsTest.cpp)
endif()
