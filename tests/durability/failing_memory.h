// Replaces operator new by one that fails on demand. Only the allocations of the thread that called
// failAllocation() are counted.
#pragma once

namespace test {

// Makes the n-th allocation from now on throw std::bad_alloc; 1 is the next one, 0 none.
void failAllocation(int n);

// Returns whether an allocation has failed since failAllocation().
bool allocationHasFailed();

}  // namespace test
