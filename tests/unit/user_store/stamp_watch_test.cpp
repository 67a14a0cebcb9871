// The thread that watches a stamp file, without a store.
#include "host/user_store/stamp_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using zlutil::settings::host::StampWatch;

TEST(StampWatch, ReportsTheFirstFailureAndGoesOnCalling) {
  const TemporaryDirectory directory;
  const std::string file = directory.write("stamp", "");
  std::atomic<int> calls{0};
  testing::internal::CaptureStderr();
  {
    const StampWatch watch(file, [&] {
      ++calls;
      throw std::bad_alloc();
    });
    for (int wait = 0; wait < 10000 && calls < 3; ++wait) {
      directory.write("stamp", std::to_string(wait));
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  EXPECT_GE(calls, 3);
  const std::string reported = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(reported.begin(), reported.end(), '\n'), 1) << reported;
  EXPECT_EQ(reported.find(file + ": cannot check for changes: "), 0u) << reported;
}

TEST(StampWatch, MayBeDestroyedByItsOwnThread) {
  const TemporaryDirectory directory;
  std::unique_ptr<StampWatch> watch;
  std::promise<void> made, ended;
  // Only the first call uses these variables.
  bool isFirst = true;
  watch = std::make_unique<StampWatch>(directory.write("stamp", ""), [&, isFirst]() mutable {
    if (!std::exchange(isFirst, false)) return;
    made.get_future().wait();
    watch.reset();
    ended.set_value();
  });
  made.set_value();
  ended.get_future().wait();
  EXPECT_EQ(watch, nullptr);
}

}  // namespace
}  // namespace test
