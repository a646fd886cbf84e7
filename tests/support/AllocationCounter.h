#ifndef ZUM_ALLOCATION_COUNTER_H
#define ZUM_ALLOCATION_COUNTER_H

#include <cstddef>

// The test program's global operator new counts every allocation it serves
// (AllocationCounter.cpp); it otherwise behaves as the standard one. A test
// reads the count before and after the code it measures.
std::size_t allocationCount();

#endif
