// Memory that runs out on demand: operator new, for every caller in the process. Only what the
// thread that called failAllocation() asks for is counted.
#pragma once

namespace test {

// The n-th allocation from now on throws std::bad_alloc; 1 is the next one, 0 none.
void failAllocation(int n);

// Whether one has failed since failAllocation().
bool allocationHasFailed();

}  // namespace test
