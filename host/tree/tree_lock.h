// The lock of one tree's memory: a readers-writer lock whose readers do not slow each other.
//
// A reader counts itself in the counter of its thread's stripe, so readers on different threads
// touch different cache lines. A writer raises a flag and waits until all counters are zero; a
// reader that meets the flag steps back. A reader costs two atomic additions; a writer reads the
// counters of the stripes that have ever had a reader. All first spin for a few microseconds,
// which is longer than most hold the lock and shorter than it takes to wake a thread: a reader that
// slept at once would lose a fifth of its time beside a thread that sets without pause. Then they
// yield, and at last sleep for a moment. A reader that has waited so long enters as a writer does.
//
// Holders do no I/O and call no foreign code. The lock is not recursive. A holder must not destroy
// an entry, because the destructor of a node acquires the lock for writing.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "base/thread_annotations.h"
#include "base/thread_stripe.h"

namespace zlutil::settings::host {

class CAPABILITY("mutex") TreeLock {
 public:
  void lock() ACQUIRE() NO_THREAD_SAFETY_ANALYSIS {
    Patience patience;
    // Sequentially consistent, like the reader's pair below: either the reader sees the flag, or
    // this thread sees the reader.
    while (writing_.exchange(true, std::memory_order_seq_cst)) patience.wait();
    for (std::uint32_t used = used_.load(std::memory_order_seq_cst); used != 0; used &= used - 1) {
      const Stripe& stripe = stripes_[static_cast<std::size_t>(__builtin_ctz(used))];
      while (stripe.readers.load(std::memory_order_seq_cst) != 0) patience.wait();
    }
  }

  void unlock() RELEASE() NO_THREAD_SAFETY_ANALYSIS {
    writing_.store(false, std::memory_order_release);
  }

 private:
  friend class ReadLock;

  struct alignas(base::kCacheLine) Stripe {
    std::atomic<int> readers{0};
  };

  // A few microseconds: longer than a single value takes.
  static constexpr int kSpins = 256;
  static constexpr int kYields = 64;
  static constexpr std::chrono::microseconds kSleep{50};

  // What a thread does each time that it has looked in vain.
  class Patience {
   public:
    void wait() {
      ++looks_;
      if (looks_ <= kSpins) {
        relax();
      } else if (looks_ <= kSpins + kYields) {
        std::this_thread::yield();
      } else {
        std::this_thread::sleep_for(kSleep);
      }
    }

   private:
    int looks_ = 0;
  };

  // Tells the processor that this thread is spinning.
  static void relax() {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
  }

  std::atomic<int>& enterAsReader() NO_THREAD_SAFETY_ANALYSIS {
    const std::size_t stripe = base::threadStripe();
    // Before the reader's pair: a writer that misses the bit is seen by the reader.
    const std::uint32_t bit = std::uint32_t{1} << stripe;
    if ((used_.load(std::memory_order_acquire) & bit) == 0) {
      used_.fetch_or(bit, std::memory_order_seq_cst);
    }
    std::atomic<int>& readers = stripes_[stripe].readers;
    for (int spins = kSpins; spins > 0; --spins) {
      readers.fetch_add(1, std::memory_order_seq_cst);
      if (!writing_.load(std::memory_order_seq_cst)) return readers;
      readers.fetch_sub(1, std::memory_order_release);
      while (writing_.load(std::memory_order_relaxed) && --spins > 0) relax();
    }
    lock();
    readers.fetch_add(1, std::memory_order_seq_cst);
    unlock();
    return readers;
  }

  static_assert(base::kThreadStripes <= 32, "used_ has a bit for each stripe");

  std::array<Stripe, base::kThreadStripes> stripes_;
  alignas(base::kCacheLine) std::atomic<bool> writing_{false};
  std::atomic<std::uint32_t> used_{0};  // the stripes that have ever had a reader
};

class SCOPED_CAPABILITY ReadLock {
 public:
  explicit ReadLock(TreeLock& lock) ACQUIRE_SHARED(lock) : readers_(lock.enterAsReader()) {}
  ~ReadLock() RELEASE() { readers_.fetch_sub(1, std::memory_order_release); }
  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

 private:
  std::atomic<int>& readers_;
};

class SCOPED_CAPABILITY WriteLock {
 public:
  explicit WriteLock(TreeLock& lock) ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
  ~WriteLock() RELEASE() { lock_.unlock(); }
  WriteLock(const WriteLock&) = delete;
  WriteLock& operator=(const WriteLock&) = delete;

 private:
  TreeLock& lock_;
};

}  // namespace zlutil::settings::host
