// System calls that fail on demand, for every caller in the process: those that open, write, cut,
// flush, rename and remove files, and the one that starts a thread. The calls are counted from
// failOn() on; only those by the thread that called it.
#pragma once

namespace test {

// The n-th call from now on fails with `error`; 1 is the next one, 0 none.
void failOn(int n, int error);

// How many calls there have been since failOn(), and whether one has failed.
int callsSince();
bool hasFailed();

}  // namespace test
