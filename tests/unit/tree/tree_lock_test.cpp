// The lock of a tree's memory, seen through what it guards: two plain numbers that differ only
// while a writer is inside. Under the thread sanitizer an access that nothing orders fails as well.
#include "host/tree/tree_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace test {
namespace {

using zlutil::settings::host::ReadLock;
using zlutil::settings::host::TreeLock;
using zlutil::settings::host::WriteLock;

class TreeLockTest : public testing::Test {
 protected:
  // Has writers change the numbers while readers, who leave hardly a moment without one of them
  // inside, read them until the last change. The readers' threads are so many numbers apart.
  void readWhileWriting(std::size_t distance) {
    std::atomic<int> writing{kWriters};
    std::atomic<int> numbered{0}, halves{0};
    std::vector<std::thread> threads;
    for (int reader = 0; reader < kReaders; ++reader) {
      threads.emplace_back([&] {
        base::threadStripe();
        ++numbered;
        while (writing > 0) halves += isHalfChanged();
      });
      while (numbered <= reader) std::this_thread::yield();
      for (std::size_t between = 1; between < distance; ++between) {
        std::thread([] { base::threadStripe(); }).join();
      }
    }
    for (int writer = 0; writer < kWriters; ++writer) {
      threads.emplace_back([&] {
        for (int round = 0; round < kRounds; ++round) change(round % 4 == 0);
        --writing;
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(halves, 0);
    const ReadLock lock(lock_);
    EXPECT_EQ(left_, kWriters * kRounds);
    EXPECT_EQ(right_, kWriters * kRounds);
  }

  TreeLock lock_;

 private:
  static constexpr int kReaders = 5;
  static constexpr int kWriters = 3;
  static constexpr int kRounds = 1000;

  // A lingering change takes so long that readers who have come do not only spin, but queue.
  void change(bool lingering) {
    const WriteLock lock(lock_);
    ++left_;
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(50);
    while (lingering && std::chrono::steady_clock::now() < end) continue;
    ++right_;
  }

  bool isHalfChanged() {
    const ReadLock lock(lock_);
    const int left = left_;
    std::this_thread::yield();  // time for a writer who should not be there
    return left != right_;
  }

  int left_ GUARDED_BY(lock_) = 0;
  int right_ GUARDED_BY(lock_) = 0;
};

TEST_F(TreeLockTest, ReadersSeeChangesWholeAndWritersOneAnothers) { readWhileWriting(1); }

TEST_F(TreeLockTest, SoDoReadersWhoShareAStripe) { readWhileWriting(base::kThreadStripes); }

TEST_F(TreeLockTest, AReaderDoesNotKeepAnotherOut) {
  const ReadLock lock(lock_);
  std::thread([this] { const ReadLock another(lock_); }).join();
}

}  // namespace
}  // namespace test
