tqc_add_test(compound_test compound/CompoundFileTest.cpp support/CompoundBuilder.cpp support/ZipWriter.cpp)
