#include "service/change_counters.h"
#include "tests/contract/service_contract.h"

namespace test {
namespace {

using zlutil::eventmgr::ScopedConnection;
using zlutil::settings::ChangeCounters;
using zlutil::settings::SettingsRemoveNodeEvent;
using zlutil::settings::SettingsValueChangeEvent;

// The counts of the key "k" of the node "n", by the node's name and without it. Other keys may
// share a counter, so tests only expect that a counter moves, except where nothing at all happens.
struct Counts {
  std::uint64_t below = ChangeCounters::table()[ChangeCounters::position("n", "k")];
  std::uint64_t alone = ChangeCounters::table()[ChangeCounters::position("", "k")];
  std::uint64_t list = ChangeCounters::table()[ChangeCounters::position("n", "")];

  bool bothMovedTo(const Counts& now) const { return below != now.below && alone != now.alone; }
  bool operator==(const Counts& now) const { return below == now.below && alone == now.alone; }
};

TEST_P(ServiceContract, EveryChangeOfAKeyIsCountedBeforeItsEvent) {
  const SettingsPtr above = addNode(root, "above"), node = addNode(above, "n");
  const SettingsPtr key = addKey(node, "k");
  Counts before;
  int heard = 0;
  const auto check = [&](const auto&) {
    const Counts now;
    EXPECT_TRUE(before.bothMovedTo(now)) << heard;
    before = now;
    ++heard;
  };
  const ScopedConnection changed(root->addListener<SettingsValueChangeEvent>(check));
  const ScopedConnection removed(root->addListener<SettingsRemoveNodeEvent>(check));
  node->setAny("k", 1, "user");
  node->setAny("k", 2, "session");
  node->unset("k", "session");
  EXPECT_TRUE(setAll(root, {{key, 3}}, "session").empty());
  node->removeKey("k");
  addKey(node, "k");
  root->removeNode("above");
  EXPECT_EQ(heard, 6);
}

TEST_P(ServiceContract, AnAddedOrRemovedEntryCountsForItsListAndAllKeysBelow) {
  using zlutil::settings::SettingsAddNodeEvent;
  const SettingsPtr node = addNode(root, "n"), from = addNode(root, "from");
  addKey(addNode(from, "n"), "k");
  Counts before;
  const auto checkAllMoved = [&before](const auto&...) {
    const Counts now;
    EXPECT_NE(before.list, now.list);
    EXPECT_TRUE(before.bothMovedTo(now));
    before = now;
  };
  const ScopedConnection added(root->addListener<SettingsAddNodeEvent>(checkAllMoved));
  addKey(node, "k");
  root->copySubtree(from, "copy");
  node->removeKey("k");
  checkAllMoved();
  root->removeNode("copy");
  checkAllMoved();
}

TEST_P(ServiceContract, AnUnchangedKeyIsNotCounted) {
  const SettingsPtr node = addNode(root, "n"), key = addKey(node, "k");
  node->setAny("k", 1, "user");
  const Counts before;
  EXPECT_EQ(intAt(node, "k"), 1);
  node->setAny("k", 1, "user");
  EXPECT_ANY_THROW(node->setAny("k", std::string("another type"), "user"));
  EXPECT_FALSE(setAll(root, {{key, 2}, {node, 2}}, "user").empty());
  EXPECT_TRUE(before == Counts());
}

}  // namespace
}  // namespace test
