tqc_add_test(xlsx_test
  xlsx/OddWorkbookTest.cpp
  xlsx/PartsTest.cpp
  xlsx/ReadAheadTest.cpp)
