// Processes that share a store, each as a tree of its own.
#include <future>

#include "service/change_counters.h"
#include "service/synchronization.h"
#include "tests/support/fake_store.h"
#include "tests/support/user_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

class SharedStore : public UserStoreTest {
 protected:
  NodePtr openBehind() { return openUnwatched(storeIn(directory.path())); }

  const TemporaryDirectory factory;
};

template <class Tag>
void expectFailure(const std::function<void()>& action, const std::string& text = "") {
  EXPECT_NE(messageOf<Tag>(action).find(text), std::string::npos) << messageOf<Tag>(action);
}

TEST_F(SharedStore, AConflictWithAnotherProcessFailsLikeOneWithinAProcess) {
  const NodePtr root = open();
  const auto prepare = [&] {
    if (!root->getChild("n")) addKey(addNode(root, "n"), "k")->getParent()->setAny("k", 1, "user");
  };
  const auto removeN = [&] { root->removeNode("n"); };
  const auto nodeOf = [](const NodePtr& tree) { return tree->getChild("n"); };
  struct Collision {
    std::function<void()> otherChange;
    std::function<void(const NodePtr& tree)> ownChange;
  };
  const Collision collisions[] = {
      {removeN,
       [&](auto& tree) {
         expectFailure<NoSuchKey>([n = nodeOf(tree)] { n->setAny("k", 2, "user"); });
       }},
      {removeN,
       [&](auto& tree) {
         expectFailure<NoSuchKey>([n = nodeOf(tree)] { n->unset("k", "user"); });
       }},
      {removeN,
       [&](auto& tree) { expectFailure<NoSuchKey>([n = nodeOf(tree)] { n->removeKey("k"); }); }},
      {removeN, [&](auto& tree) { expectFailure<NoSuchNode>([&] { tree->removeNode("n"); }); }},
      {removeN,
       [&](auto& tree) { expectFailure<NoSuchNode>([n = nodeOf(tree)] { addKey(n, "x"); }); }},
      {removeN,
       [&](auto& tree) {
         const SettingsPtr key = nodeOf(tree)->getChild("k");
         EXPECT_EQ(setAll(tree, {{key, 2}}, "user"),
                   (SettingsProblems{{"(removed).k", "The key has been removed."}}));
       }},
      {[&] { root->getChild("n")->unset("k", "user"); },
       [&](auto& tree) {
         expectFailure<ValueNotDefinedForGivenLevel>([n = nodeOf(tree)] { n->unset("k", "user"); });
       }},
      {[&] { addKey(root, "same"); },
       [&](auto& tree) {
         expectFailure<ErrorAddingChildNodeOrKey>([&] { addNode(tree, "same"); }, "is taken");
       }},
  };
  for (const Collision& collision : collisions) {
    prepare();
    const NodePtr behind = openBehind();
    collision.otherChange();
    const std::string stored = contentsOf(root);
    collision.ownChange(behind);
    EXPECT_EQ(contentsOf(behind), stored) << &collision - collisions;
    EXPECT_EQ(contentsOf(open()), stored) << &collision - collisions;
  }
}

TEST_F(SharedStore, SynchronizingReadsEverythingThatAnotherProcessHasStored) {
  const NodePtr root = open();
  addKey(root, "k")->getParent()->setAny("k", 0, "user");
  const NodePtr behind = openBehind();
  for (int round = 1; round <= 20; ++round) {
    root->setAny("k", round, "user");
    EXPECT_EQ(intAt(behind, "k"), round - 1);
    synchronize(behind->getChild("k"));
    EXPECT_EQ(intAt(behind, "k"), round);
  }
  synchronize(behind);
  EXPECT_EQ(intAt(behind, "k"), 20);
  messageOf<NoSuchNode>([] { zlutil::settings::synchronize(nullptr); });
  // While another connection holds the database locked, the answer is not known.
  const auto other = shell();
  other->execute("BEGIN EXCLUSIVE");
  const std::string message = messageOf<UnreadableStore>([&] { synchronize(behind); });
  EXPECT_EQ(message.rfind("Cannot read " + database() + ": ", 0), 0u) << message;
  other->execute("COMMIT");
  synchronize(behind);
}

TEST_F(SharedStore, ANodeThatAnotherProcessRemovesKeepsWhatASettingsFileDefines) {
  const NodePtr root = open();
  const SettingsPtr node = addNode(root, "n");
  for (const char* name : {"a", "b", "c", "d", "e"}) addKey(node, name);
  node->setAny("c", 1, "user");
  factory.write("a.xml",
                "<settings version=\"1\"><node name=\"n\"><key name=\"c\" type=\"int\"/></node>"
                "</settings>");
  const NodePtr other = openTree(storeIn(directory.path()), factory.path());
  EXPECT_EQ(other->getChild("n")->getChildren().size(), 5u);
  root->removeNode("n");
  synchronize(other);
  const auto left = other->getChild("n")->getChildren();
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0]->getName(), "c");
  EXPECT_FALSE(other->getChild("n")->isSet("c", "user"));
}

TEST_F(SharedStore, TheFirstValueFixesTheTypeForAllProcesses) {
  factory.write("a.xml", "<settings version=\"1\"><key name=\"filed\"/></settings>");
  const auto openHere = [&] { return openTree(storeIn(directory.path()), factory.path()); };
  const NodePtr root = openHere();
  addKey(root, "added");
  for (const char* name : {"added", "filed"}) {
    const std::shared_ptr<Store> behind = std::make_shared<UserStore>(storeIn(directory.path()));
    const auto tree =
        boost::make_shared<Node>(Tree::makeStandalone(), "settings", true, ValidatorPtr());
    behind->readAll(*tree, kUser);
    root->setAny(name, std::string("text"), "user");
    root->unset(name, "user");
    // The other process learns the type before its own change is stored.
    bool isFixed = false;
    EXPECT_FALSE(behind->apply({PutValue{name, 1}}, [&](const ExternalChanges& external) {
      for (const Change& change : external.changes) {
        const auto* const fixed = std::get_if<FixKind>(&change);
        if (fixed && fixed->path == name) isFixed = true;
      }
      return false;
    })) << name;
    EXPECT_TRUE(isFixed) << name;
    expectFailure<ValidationFailure>([&] { openHere()->setAny(name, 1, "user"); }, "holds string");
  }
}

TEST_F(SharedStore, AValueWhoseTypeASettingsFileHasChangedIsReportedAndKept) {
  constexpr int kOthers = 100;
  std::string others;
  for (int key = 0; key < kOthers; ++key) {
    others += "<key name=\"k" + std::to_string(key) + "\" type=\"int\"/>";
  }
  const auto withType = [&](const std::string& type) {
    factory.write("a.xml", "<settings version=\"1\"><key name=\"k\" type=\"" + type + "\"/>" +
                               others + "</settings>");
    return openTree(storeIn(directory.path()), factory.path());
  };
  withType("string")->setAny("k", std::string("precious"), "user");
  testing::internal::CaptureStderr();
  NodePtr root = withType("int");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            database() +
                ": \"k\" is left out: the stored value is string, and the key holds int "
                "values; it stays stored\n");
  EXPECT_FALSE(root->isSet("k", "user"));
  // Many values are stored by one statement.
  SettingsValues values;
  for (const SettingsPtr& key : root->getChildren()) values.emplace_back(key, 1);
  EXPECT_EQ(setAll(root, values, "user"), SettingsProblems());
  EXPECT_EQ(shell()->number("SELECT count(*) FROM settings WHERE type = 'int' AND value = '1'"),
            kOthers + 1);
  root->setAny("k", 2, "user");
  EXPECT_EQ(shell()->text("SELECT path || type || value FROM set_aside"), "kstringprecious");
  EXPECT_EQ(intAt(withType("int"), "k"), 2);
  // The settings file no longer defines the key.
  testing::internal::CaptureStderr();
  factory.write("a.xml", "<settings version=\"1\"/>");
  openTree(storeIn(directory.path()), factory.path());
  EXPECT_NE(testing::internal::GetCapturedStderr().find("\"k\" is left out: a value is stored"),
            std::string::npos);
  EXPECT_EQ(intAt(withType("int"), "k"), 2);
}

TEST_F(SharedStore, SettingAValueThatAnotherProcessReplacedStoresItAgain) {
  const NodePtr root = open();
  const SettingsPtr one = addKey(root, "one"), two = addKey(root, "two");
  setAll(root, {{one, 1}, {two, 1}}, "user");
  const NodePtr behind = openBehind();
  const std::string stored = contentsOf(behind);
  behind->setAny("one", 1, "user");
  EXPECT_EQ(shell()->number("SELECT max(revision) FROM journal"), 3) << "nothing had to be stored";
  for (const bool inCommit : {false, true}) {
    setAll(root, {{one, 2}, {two, 2}}, "user");
    if (inCommit) {
      const SettingsPtr key = behind->getChild("two");
      EXPECT_EQ(setAll(behind, {{behind->getChild("one"), 1}, {key, 1}}, "user"),
                SettingsProblems());
    } else {
      behind->setAny("one", 1, "user");
      EXPECT_EQ(intAt(behind, "two"), 2) << "it arrives with the same look";
      behind->setAny("two", 1, "user");
    }
    EXPECT_EQ(contentsOf(open()), stored);
    EXPECT_TRUE(eventually([&] { return contentsOf(root) == stored; }));
  }
}

TEST_F(SharedStore, AChangeAfterAPrunedJournalComparesEverything) {
  const NodePtr root = open();
  addKey(root, "k");
  addKey(root, "other");
  const NodePtr behind = openBehind();
  root->setAny("other", 5, "user");
  root->setAny("other", 6, "user");
  shell()->execute("DELETE FROM journal WHERE revision < (SELECT max(revision) FROM journal)");
  behind->setAny("k", 1, "user");
  EXPECT_EQ(contentsOf(behind), "k key\nk = int 1\nother key\nother = int 6\n");
}

TEST_F(SharedStore, ASlowListenerDelaysNoChangeOfTheTree) {
  const NodePtr first = open(), second = open();
  addKey(second, "k");
  addKey(second, "last");
  ASSERT_TRUE(eventually([&] { return contentsOf(first) == contentsOf(second); }));
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  std::atomic<bool> isHeld{false};
  const zlutil::eventmgr::ScopedConnection blocking(
      first->getChild("k")->addListener<zlutil::settings::SettingsValueChangeEvent>(
          [&](const auto&) {
            isHeld = true;
            released.wait();
          }));
  Listener listener(first->getChild("last"));
  Listener all(first);
  second->setAny("k", 1, "user");
  ASSERT_TRUE(eventually([&] { return isHeld.load(); }));
  for (int value = 2; value < 100; ++value) {
    second->setAny("last", value, "user");
    addKey(addNode(second, "passing"), "x");
    second->removeNode("passing");
  }
  EXPECT_TRUE(eventually([&] { return intAt(first, "last") == 99; }));
  first->setAny("last", 100, "user");
  EXPECT_EQ(intAt(first, "last"), 100);
  addKey(second, "end");
  ASSERT_TRUE(eventually([&] { return contentsOf(first) == contentsOf(second); }));
  release.set_value();
  // The thread that makes a change delivers its event.
  EXPECT_EQ(listener.waitFor(2), (Names{"changed last", "changed last"}));
  EXPECT_EQ(all.waitFor(4),
            (Names{"changed last", "changed k", "changed last", "added end to settings"}));
}

TEST(UnwatchedTree, CatchesUpWheneverItIsReadOrChanged) {
  const auto store = std::make_shared<FakeStore>(std::make_shared<FakeStore::Record>());
  store->goUnwatched();
  const NodePtr root = treeOver(store);
  addKey(root, "k");
  int value = 0;
  const auto change = [&] { store->changeFromOutside({PutValue{"k", ++value}}, true); };
  const auto addElsewhere = [&](const std::string& name) {
    store->changeFromOutside({DefineEntry{name, false, 0, {}}}, true);
    return Names{name};
  };
  using zlutil::settings::ChangeCounters;
  const auto count = [] {
    return ChangeCounters::table()[ChangeCounters::position("settings", "k")].load();
  };
  change();
  EXPECT_EQ(intAt(root, "k"), 1);
  const auto before = count();
  intAt(root, "k");
  EXPECT_NE(count(), before) << "a reader must not cache a value that nothing will invalidate";
  change();
  EXPECT_TRUE(root->isSet("k", ""));
  EXPECT_NE(root->getChild(addElsewhere("a").front()), nullptr);
  EXPECT_NE(root->findDescendant(addElsewhere("b")), nullptr);
  addElsewhere("c");
  EXPECT_EQ(namesOf(root->getChildren()), (Names{"a", "b", "c", "k"}));
  addElsewhere("d");
  messageOf<ErrorAddingChildNodeOrKey>([&] { addKey(root, "d"); });
  change();
  root->unset("k", "user");
  EXPECT_EQ(intAt(root, "k"), -1);
}

}  // namespace
}  // namespace test
