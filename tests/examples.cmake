# The examples read the samples; tests/examples has the expected output.
# tqc_add_example_test(NAME ENCODING PROGRAM [ARGUMENT...])
function(tqc_add_example_test name encoding program)
  add_test(NAME example_${name} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/examples/compare
    ${CMAKE_CURRENT_SOURCE_DIR}/examples/${name}.txt ${encoding} $<TARGET_FILE:${program}> ${ARGN})
  set_tests_properties(example_${name} PROPERTIES WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}/examples/data)
endfunction()

if(TARGET read_rows)
  # File names as people have them.
  set(named ${CMAKE_CURRENT_BINARY_DIR}/価格)
  configure_file(${PROJECT_SOURCE_DIR}/examples/data/prices-utf8.csv ${named}.csv COPYONLY)
  configure_file(${PROJECT_SOURCE_DIR}/examples/data/prices-locked.xtqf ${named}.xtqf COPYONLY)
  tqc_add_example_test(rows UTF-8 read_rows ${named}.csv)
  tqc_add_example_test(preview ASCII fixed_length ledger.txt)
  tqc_add_example_test(fixed_rows ASCII fixed_length ledger.txt 6 20 10)
  if(TQC_WITH_ZIP)
    tqc_add_example_test(package CP932 open_package ${named}.xtqf secret)
  endif()
  if(TQC_WITH_XLSX)
    tqc_add_example_test(sheets UTF-8 list_and_convert prices.xlsx)
    tqc_add_example_test(sheet UTF-8 list_and_convert prices.xlsx 0 /dev/stdout)
  endif()
  if(TQC_WITH_ACCESS)
    tqc_add_example_test(table UTF-8 read_table stock.accdb)
  endif()
endif()

# Those of Python, and the ones in its document.
if(TARGET tqcaccess_python AND TQC_WITH_ACCESS AND TQC_WITH_XLSX AND TQC_WITH_ENCRYPTION)
  add_test(NAME example_frame COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/examples/compare
    ${CMAKE_CURRENT_SOURCE_DIR}/examples/frame.txt UTF-8
    ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/examples/read_frame.py stock.accdb Parts)
  add_test(NAME example_python_document
    COMMAND ${Python3_EXECUTABLE} -m doctest ${PROJECT_SOURCE_DIR}/docs/python.md)
  set_tests_properties(example_frame example_python_document PROPERTIES
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}/examples/data SKIP_REGULAR_EXPRESSION "No module named 'pandas'"
    ENVIRONMENT "PYTHONPATH=${PROJECT_BINARY_DIR}/python;PYTHONDONTWRITEBYTECODE=1;PYTHONUTF8=1")
endif()
