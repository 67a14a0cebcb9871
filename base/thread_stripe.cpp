#include "base/thread_stripe.h"

#include <atomic>

namespace base {
namespace {

std::atomic<std::size_t> nextStripe{0};

}  // namespace

std::size_t threadStripe() noexcept {
  thread_local const std::size_t stripe =
      nextStripe.fetch_add(1, std::memory_order_relaxed) % kThreadStripes;
  return stripe;
}

}  // namespace base
