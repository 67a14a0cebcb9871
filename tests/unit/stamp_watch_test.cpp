// The thread that watches a file for a user store.
#include "host/settings/stamp_watch.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>

#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using zlutil::settings::host::StampWatch;

TEST(StampWatch, MayBeEndedByItsOwnThread) {
  const TemporaryDirectory directory;
  std::unique_ptr<StampWatch> watch;
  std::promise<void> made, ended;
  // Only the first call uses what is here.
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
