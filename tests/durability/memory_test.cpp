// Makes every allocation of a change fail in turn: the change is made in both the tree and the
// store, or in neither.
#include <functional>
#include <new>

#include "service/events.h"
#include "tests/durability/failing_memory.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

TEST(MemoryTest, AChangeWithoutMemoryChangesNeitherTreeNorStore) {
  const TemporaryDirectory directory;
  const auto root = openTree(storeIn(directory.path()));
  const SettingsPtr node = addNode(root, "n"), below = addNode(node, "below");
  // As many keys as the table of a node's children has room for before it grows.
  for (const char* name : {"a", "b", "c", "d"}) {
    addKey(below, name);
    below->setAny(name, std::string(100, 'x'), "user");
  }
  // Long enough to be allocated, and another one at each call.
  int length = 100;
  const auto newText = [&] { return std::string(++length, 'y'); };
  const zlutil::eventmgr::ScopedConnection heard(
      below->addListener<zlutil::settings::SettingsValueChangeEvent>([](const auto&) {}));
  const SettingsPtr a = below->getChild("a"), b = below->getChild("b");
  const auto set = [&] { below->setAny("a", newText(), "user"); };
  // Returns problems in place of throwing.
  const auto commit = [&] {
    const SettingsValues values = {{a, newText()}, {b, newText()}};
    if (!root->setMultiple(boost::make_iterator_range(values.cbegin(), values.cend()), "user", 0)
             .empty()) {
      throw std::bad_alloc();
    }
  };
  const std::function<void()> changes[] = {[&] { addKey(below, "new"); },
                                           [&] { root->copySubtree(node, "copy"); },
                                           [&] { root->removeNode("copy"); }, set, commit};
  int failed = 0;
  for (const auto& change : changes) {
    for (int n = 1;; ++n) {
      const std::string before = contentsOf(root);
      bool refused = false;
      failAllocation(n);
      try {
        change();
      } catch (const std::exception&) {
        refused = true;
      }
      const bool over = !allocationHasFailed();
      failAllocation(0);
      failed += refused;
      const std::string now = contentsOf(root);
      ASSERT_EQ(now == before, refused) << "allocation " << n;
      ASSERT_EQ(contentsOf(openTree(storeIn(directory.path()))), now) << "allocation " << n;
      if (over) break;
    }
  }
  EXPECT_GT(failed, 20);
}

}  // namespace
}  // namespace test
