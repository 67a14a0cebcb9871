// Replaces system calls by ones that fail on demand: those that open, write, truncate, flush,
// rename and remove files, and the one that starts a thread. Only the calls of the thread that
// called failOn() are counted, from then on.
#pragma once

#include <functional>
#include <set>
#include <string>

namespace test {

// Makes the n-th call from now on fail with `error`; 1 is the next one, 0 none.
void failOn(int n, int error);

// Does the same, but counts only calls that start a thread.
void failThreadOn(int n, int error);

// Runs `interruption`, which is borrowed, before the n-th call from now on. That call does not
// fail.
void interruptOn(int n, const std::function<void()>& interruption);

// Returns whether the n-th call has come.
bool hasCome();

// Returns the names of the files that were written since then and not flushed afterwards.
std::set<std::string> unflushedFiles();

}  // namespace test
