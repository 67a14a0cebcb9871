// A small number that belongs to the calling thread, for data that is split into stripes so that
// threads do not touch each other's cache lines. Threads are numbered in the order in which they
// first ask, so up to kThreadStripes threads that live together have stripes of their own.
#pragma once

#include <cstddef>

#include "base/export.h"

namespace base {

inline constexpr std::size_t kThreadStripes = 32;
inline constexpr std::size_t kCacheLine = 64;

// In [0, kThreadStripes); the same for every call on one thread.
SETTINGS_HOST_API std::size_t threadStripe() noexcept;

}  // namespace base
