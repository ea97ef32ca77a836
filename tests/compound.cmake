tqc_add_test(compound_test compound/CompoundFileTest.cpp)
