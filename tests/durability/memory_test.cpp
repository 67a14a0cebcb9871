// Makes every allocation of a change of structure fail in turn: the change is made in both the tree
// and the store, or in neither.
#include <functional>
#include <new>

#include "tests/durability/failing_memory.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

TEST(MemoryTest, AChangeOfStructureWithoutMemoryChangesNeitherTreeNorStore) {
  const TemporaryDirectory directory;
  const auto root = openTree(storeIn(directory.path()));
  const SettingsPtr node = addNode(root, "n"), below = addNode(node, "below");
  // As many keys as the table of a node's children has room for before it grows.
  for (const char* name : {"a", "b", "c", "d"}) {
    addKey(below, name);
    below->setAny(name, std::string(100, 'x'), "user");
  }
  const std::function<void()> changes[] = {[&] { addKey(below, "new"); },
                                           [&] { root->copySubtree(node, "copy"); },
                                           [&] { root->removeNode("copy"); }};
  int failed = 0;
  for (const auto& change : changes) {
    for (int n = 1;; ++n) {
      const std::string before = contentsOf(root);
      bool refused = false;
      failAllocation(n);
      try {
        change();
      } catch (const std::bad_alloc&) {
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
