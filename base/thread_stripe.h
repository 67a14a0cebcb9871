// A small number that belongs to the calling thread, for data that is split into stripes so that
// threads share no cache lines. Threads are numbered in the order of their first call, so up to
// kThreadStripes threads that live together have different numbers.
#pragma once

#include <cstddef>

#include "base/export.h"

namespace base {

inline constexpr std::size_t kThreadStripes = 32;
inline constexpr std::size_t kCacheLine = 64;

// Returns a number in [0, kThreadStripes), the same for every call on one thread.
SETTINGS_HOST_API std::size_t threadStripe() noexcept;

}  // namespace base
