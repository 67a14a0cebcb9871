// System calls that fail on demand, for every caller in the process: those that open, write, cut,
// flush, rename and remove files, and the one that starts a thread. The calls are counted from
// failOn() on; only those by the thread that called it.
#pragma once

#include <functional>
#include <set>
#include <string>

namespace test {

// The n-th call from now on fails with `error`; 1 is the next one, 0 none.
void failOn(int n, int error);

// Likewise, but only calls that start a thread are counted and fail.
void failThreadOn(int n, int error);

// Before the n-th call from now on, which does not fail, `interruption` runs; it is borrowed.
void interruptOn(int n, const std::function<void()>& interruption);

// Returns whether the n-th call has come.
bool hasCome();

// Returns the names of the files that have been written to since then and not flushed afterwards.
std::set<std::string> unflushedFiles();

}  // namespace test
