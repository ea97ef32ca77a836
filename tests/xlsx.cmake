tqc_add_test(xlsx_test
  xlsx/OddWorkbookTest.cpp
  xlsx/XmlScannerTest.cpp
  xlsx/ZipArchiveTest.cpp)
