// A mutex for writers that lets some go first: once a thread waits in lockAhead(), each other
// thread acquires the mutex at most once before it. Threads that apply external changes use it,
// because threads that change the tree without pause would starve them at a plain mutex. Any
// thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "base/thread_annotations.h"

namespace zlutil::settings::host {

class CAPABILITY("mutex") WriterMutex {
 public:
  void lock() ACQUIRE() {
    if (ahead_.load(std::memory_order_relaxed) > 0) letAhead();
    mutex_.lock();
  }

  void lockAhead() ACQUIRE() {
    ahead_.fetch_add(1, std::memory_order_relaxed);
    mutex_.lock();
    {
      const std::lock_guard<std::mutex> lock(gate_);
      ahead_.fetch_sub(1, std::memory_order_relaxed);
    }
    passed_.notify_all();
  }

  void unlock() RELEASE() { mutex_.unlock(); }

 private:
  void letAhead() {
    std::unique_lock<std::mutex> lock(gate_);
    passed_.wait(lock, [this] { return ahead_.load(std::memory_order_relaxed) == 0; });
  }

  std::mutex mutex_;
  std::atomic<int> ahead_{0};  // on their way to the mutex; falls under gate_ only
  std::mutex gate_;
  std::condition_variable passed_;
};

}  // namespace zlutil::settings::host
