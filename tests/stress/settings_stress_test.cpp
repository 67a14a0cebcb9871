// Many threads on one tree. What is checked here holds for every interleaving; run under the thread
// sanitizer the tests also show that no access is unguarded.
#include <atomic>
#include <memory>
#include <thread>

#include "service/change_counters.h"
#include "tests/support/settings_verbs.h"

namespace test {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 2000;

class SettingsStress : public testing::Test {
 protected:
  SettingsStress() : root_(zlutil::settings::ZSettings::createSettingsNode("r", false, true, {})) {}

  // Runs `work(number)` on each of kThreads threads, and `watch()` over and over on one more until
  // they are done.
  template <class Work, class Watch>
  void run(const Work& work, const Watch& watch) {
    std::atomic<int> running{kThreads};
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
      threads.emplace_back([&, number] {
        work(number);
        --running;
      });
    }
    while (running > 0) watch();
    for (std::thread& thread : threads) thread.join();
  }

  const SettingsPtr root_;
};

TEST_F(SettingsStress, NoUpdateIsLostAndEveryReadIsAValueThatWasSet) {
  for (int number = 0; number < kThreads; ++number) {
    const std::string name = "n" + std::to_string(number);
    addKey(addNode(root_, name), "text");
    root_->getChild(name)->setAny("text", std::string(100, 'a'), "user");
  }
  std::atomic<int> heard{0};
  zlutil::eventmgr::ScopedConnection connection(
      root_->addListener<zlutil::settings::SettingsValueChangeEvent>(
          [&](const auto&) { ++heard; }));
  run(
      [&](int number) {
        const SettingsPtr node = root_->getChild("n" + std::to_string(number));
        for (int round = 1; round <= kRounds; ++round) {
          const std::string value(100, static_cast<char>('a' + round % 26));
          node->setAny("text", value, "user");
          ASSERT_EQ(boost::any_cast<std::string>(node->getValue("text", "")), value);
        }
      },
      [&] {
        for (const SettingsPtr& node : root_->getChildren()) {
          const auto text = boost::any_cast<std::string>(node->getValue("text", ""));
          ASSERT_EQ(text, std::string(100, text.at(0)));
        }
      });
  EXPECT_EQ(heard, kThreads * kRounds);
}

TEST_F(SettingsStress, CommitsOfTheSameKeysAreAppliedWholeOneAfterTheOther) {
  SettingsValues keys;
  for (int i = 0; i < 20; ++i) keys.emplace_back(addKey(root_, "k" + std::to_string(i)), 0);
  ASSERT_TRUE(setAll(root_, keys, "user").empty());
  run(
      [&](int number) {
        SettingsValues values = keys;
        for (int round = 0; round < kRounds / 10; ++round) {
          for (auto& value : values) value.second = number * kRounds + round;
          EXPECT_TRUE(setAll(root_, values, "user").empty());
        }
      },
      [&] { ASSERT_GE(intAt(root_, "k7"), 0); });
  for (const auto& key : keys) EXPECT_EQ(intAt(root_, key.first->getName()), intAt(root_, "k0"));
}

TEST_F(SettingsStress, EntriesComeAndGoWhileOthersReadThem) {
  addNode(root_, "busy");
  run(
      [&](int number) {
        const std::string name = "e" + std::to_string(number);
        for (int round = 0; round < kRounds / 10; ++round) {
          const SettingsPtr busy = root_->getChild("busy");
          const SettingsPtr node = addNode(busy, name);
          addKey(node, "k");
          node->setAny("k", round, "user");
          busy->copySubtree(node, name + "copy");
          busy->removeNode(name);
          ASSERT_EQ(intAt(node, "k"), round);
          busy->removeNode(name + "copy");
        }
      },
      [&] {
        for (const SettingsPtr& node : root_->getChild("busy")->getChildren()) {
          node->getPath();
          for (const SettingsPtr& key : node->getChildren()) key->getParent();
        }
      });
  EXPECT_TRUE(root_->getChild("busy")->getChildren().empty());
}

TEST_F(SettingsStress, AnEntryInThePlaceOfARemovedOneIsNotFoundUnderTheCountOfThat) {
  using zlutil::settings::ChangeCounters;
  const auto& count = ChangeCounters::table()[ChangeCounters::position("n", "last")];
  const SettingsPtr large = addNode(root_, "large"), small = addNode(root_, "small");
  for (int i = 0; i < 10 * kRounds; ++i) addKey(large, "k" + std::to_string(i));
  addKey(large, "last");
  addKey(small, "last");
  for (int round = 0; round < kRounds / 100; ++round) {
    root_->copySubtree(large, "n");
    const std::uint64_t before = count;
    std::thread remover([&] { root_->removeNode("n"); });
    while (root_->getChild("n")) {
    }
    root_->copySubtree(small, "n");
    EXPECT_NE(count, before) << round;
    remover.join();
    root_->removeNode("n");
  }
}

TEST_F(SettingsStress, SubscriptionsComeAndGoDuringDelivery) {
  addKey(root_, "k");
  run(
      [&](int number) {
        for (int round = 0; round < kRounds / 10; ++round) {
          // A call that has begun elsewhere may outlast the connection, so the callback owns what
          // it uses.
          const auto heard = std::make_shared<std::atomic<int>>(0);
          const zlutil::eventmgr::ScopedConnection connection(
              root_->addListener<zlutil::settings::SettingsValueChangeEvent>(
                  [heard](const auto&) { ++*heard; }));
          root_->setAny("k", number * kRounds + round, "session");
          EXPECT_GT(*heard, 0);
        }
      },
      [&] { root_->getValue("k", ""); });
}

}  // namespace
}  // namespace test
