// Several changes of a tree as one (service/tree_changes.h).
#include "service/tree_changes.h"

#include <atomic>
#include <random>
#include <sstream>

#include "host/files/settings_reader.h"
#include "service/settings_file.h"
#include "tests/support/user_store_fixture.h"
#include "values/stored_value.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
namespace host = zlutil::settings::host;
using zlutil::boostany::kindOfValue;
using zlutil::settings::applyChanges;
using zlutil::settings::CValidator;
using zlutil::settings::SettingsFile;
using zlutil::settings::TreeChange;
using zlutil::settings::TreeChanges;
using zlutil::settings::ZSettings;

const Names kLevels = {"session", "user", "workgroup", "factory"};

SettingsPtr newTree() {
  return ZSettings::createSettingsNode("settings", false, true, ValidatorChoice());
}
std::string textOf(const SettingsPtr& root) { return SettingsFile::text(root, kLevels); }

// Makes the change by the ordinary operations; throws if it is not possible.
void makeAlone(const SettingsPtr& root, const TreeChange& change) {
  const auto split = [&](const std::string& path) {
    const std::size_t dot = path.rfind('.');
    SettingsPtr parent = root;
    if (dot != std::string::npos) {
      Names names;
      std::stringstream text(path.substr(0, dot));
      for (std::string name; std::getline(text, name, '.');) names.push_back(name);
      parent = root->findDescendant(names);
    }
    if (!parent || parent->isKey()) throw std::runtime_error("no parent");
    return std::make_pair(parent, path.substr(dot == std::string::npos ? 0 : dot + 1));
  };
  const auto [parent, name] = split(change.path);
  const auto remove = [](const SettingsPtr& from, const std::string& child) {
    const SettingsPtr entry = from->getChild(child);
    if (entry && entry->isKey()) return from->removeKey(child);
    from->removeNode(child);
  };
  const SettingsPtr entry = parent->getChild(name);
  switch (change.what) {
    case TreeChange::kSet:
      return parent->setAny(name, change.value, change.level);
    case TreeChange::kUnset:
      return parent->unset(name, change.level);
    case TreeChange::kAddNode:
      addNode(parent, name);
      return;
    case TreeChange::kAddKey:
      addKey(parent, name);
      return parent->setAny(name, change.value, change.level);
    case TreeChange::kRemove:
      return remove(parent, name);
    case TreeChange::kMove: {
      const auto [target, newName] = split(change.target);
      if (!entry || target->getChild(newName)) throw std::runtime_error("not possible");
      for (SettingsPtr at = target; at; at = at->getParent()) {
        if (at == entry) throw std::runtime_error("below itself");
      }
      if (!entry->isKey()) {
        target->copySubtree(entry, newName);
      } else {
        addKey(target, newName);
        for (const std::string& level : kLevels) {
          const boost::any value = parent->getValue(name, level);
          if (!value.empty()) target->setAny(newName, value, level);
        }
        if (parent->getKeyType(name) && !target->getKeyType(newName)) {
          const bool isInt = parent->getKeyType(name) == kindOfValue(boost::any(0));
          target->setAny(newName, isInt ? boost::any(0) : boost::any(std::string()), "session");
          target->unset(newName, "session");
        }
      }
      return remove(parent, name);
    }
  }
}

class RandomChanges {
 public:
  explicit RandomChanges(unsigned seed) : random_(seed) {}

  std::vector<TreeChange> next() {
    std::vector<TreeChange> changes;
    for (int count = 1 + number(3); count > 0; --count) {
      TreeChange change{static_cast<TreeChange::What>(number(6)), path(), path()};
      change.level = kLevels[static_cast<std::size_t>(number(4))];
      if (change.what == TreeChange::kSet || change.what == TreeChange::kAddKey) {
        change.value = number(8) == 0 ? boost::any(std::string("x")) : boost::any(number(1000));
      }
      changes.push_back(change);
    }
    return changes;
  }

 private:
  int number(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
  std::string path() {
    std::string path(1, static_cast<char>('a' + number(3)));
    for (int depth = number(2); depth > 0; --depth) {
      path += '.';
      path += static_cast<char>('a' + number(3));
    }
    return path;
  }

  std::mt19937 random_;
};

TEST(TreeChanges, AreAsTheirChangesOneAfterTheOtherOrNone) {
  int made = 0, refused = 0;
  for (unsigned seed = 1; seed <= 100; ++seed) {
    RandomChanges random(seed);
    const SettingsPtr tree = newTree();
    SettingsPtr model = newTree();
    for (int step = 0; step < 150; ++step) {
      const std::vector<TreeChange> changes = random.next();
      const std::string before = textOf(tree);
      const SettingsProblems trial = applyChanges(tree, changes, true);
      ASSERT_EQ(textOf(tree), before);
      const SettingsProblems problems = applyChanges(tree, changes);
      ASSERT_EQ(trial, problems);
      bool isPossible = true;
      try {
        for (const TreeChange& change : changes) makeAlone(model, change);
      } catch (const std::exception&) {
        isPossible = false;
      }
      const bool mustMoveFirst =
          !problems.empty() && problems[0].second.find("Move it first") != std::string::npos;
      ASSERT_TRUE(isPossible == problems.empty() || mustMoveFirst)
          << "seed " << seed << " step " << step
          << (problems.empty() ? "" : problems[0].first + ": " + problems[0].second);
      ASSERT_EQ(textOf(tree), problems.empty() ? textOf(model) : before) << seed << ' ' << step;
      problems.empty() ? ++made : ++refused;
      if (problems.empty()) continue;
      host::ParseRules rules;
      rules.tree = host::Tree::makeStandalone();
      model = host::readSettingsContent(before, "the tree before", rules);
    }
  }
  EXPECT_GT(made, 1000);
  EXPECT_GT(refused, 1000);
}

TEST(TreeChanges, AreSeenAtOnceAndHeardInOrder) {
  const SettingsPtr root = newTree(), node = addNode(root, "n");
  addKey(node, "gone");
  addKey(node, "old");
  node->setAny("old", 1, "user");
  const Listener listener(root);
  EXPECT_EQ(TreeChanges()
                .addKey("n.fresh", 7)
                .remove("n.gone")
                .set("n.old", 2)
                .set("n.old", 3, "session")
                .move("n", "m")
                .commit(root)[0]
                .second,
            "\"n\" has been changed before it is moved. Move it first.");
  EXPECT_EQ(listener.heard(), Names{});
  EXPECT_EQ(TreeChanges()
                .addKey("n.fresh", 7)
                .remove("n.gone")
                .set("n.old", 2)
                .set("n.old", 3, "session")
                .commit(root),
            SettingsProblems());
  // Both levels of one key: an event for each.
  EXPECT_EQ(listener.heard(), (Names{"removed gone from n", "added fresh to n", "changed old",
                                     "changed old", "changed fresh"}));
  EXPECT_EQ(intAt(node, "old"), 3);
  EXPECT_EQ(intAt(node, "old", "user"), 2);
  std::atomic<bool> isOver{false};
  int torn = 0;
  std::thread reader([&] {
    while (!isOver) {
      const std::string text = textOf(root);
      const std::size_t first = text.find("\"fresh\"");
      if (first == std::string::npos || text.find("\"fresh\"", first + 1) != std::string::npos) {
        ++torn;
      }
    }
  });
  for (int round = 0; round < 200; ++round) {
    ASSERT_EQ(TreeChanges().move(round % 2 ? "m" : "n", round % 2 ? "n" : "m").commit(root),
              SettingsProblems());
  }
  isOver = true;
  reader.join();
  EXPECT_EQ(torn, 0);
}

TEST(TreeChanges, ValidatorsJudgeWhatIsSetAddedAndMoved) {
  const SettingsPtr root = newTree();
  Names judged;
  const auto small = [&](int most) {
    return ValidatorChoice(CValidator(
        [&judged, most](const auto& node, const std::string& key, const boost::any& value) {
          judged.push_back(node->getPath() + '/' + key);
          if (boost::any_cast<int>(value) > most)
            return boost::optional<std::string>("it is too large");
          return boost::optional<std::string>();
        }));
  };
  addNode(root, "strict", small(10));
  addNode(root, "lax");
  const auto problems =
      TreeChanges().addNode("strict.n").addKey("strict.n.k", 11).addKey("lax.k", 20).commit(root);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].first, "settings.strict.n.k");
  EXPECT_EQ(judged, Names{"settings.strict.n/k"});
  EXPECT_EQ(root->getChild("lax")->getChildren().size(), 0u);
  EXPECT_TRUE(TreeChanges().addKey("lax.k", 20).addKey("lax.other", 5).commit(root).empty());
  EXPECT_EQ(TreeChanges().move("lax.k", "strict.k").commit(root).size(), 1u);
  EXPECT_TRUE(TreeChanges().move("lax.other", "strict.k").commit(root).empty());
  judged.clear();
  EXPECT_TRUE(TreeChanges().move("strict.k", "strict.same").commit(root).empty());
  EXPECT_EQ(judged, Names{});  // its validator has accepted the value already
  EXPECT_EQ(TreeChanges().set("strict.same", 11).set("lax.none", 1).commit(root)[0].first,
            "lax.none");
  EXPECT_EQ(TreeChanges().addKey("strict.own", 3, "user", small(2)).commit(root).size(), 1u);
}

class StoredChanges : public UserStoreTest {};

TEST_F(StoredChanges, AreOneTransactionOfTheStoreThatAnotherProcessHears) {
  const NodePtr here = open(), there = open();
  ASSERT_TRUE(TreeChanges()
                  .addNode("n")
                  .addKey("n.k", 1)
                  .addKey("n.text", std::string("x"), "session")
                  .addKey("plain", boost::any())
                  .commit(here)
                  .empty());
  EXPECT_TRUE(eventually([&] { return contentsOf(there) == contentsOf(here); }));
  const auto db = shell();
  const std::int64_t before = db->number("select max(revision) from journal");
  ASSERT_TRUE(TreeChanges()
                  .move("n", "m")
                  .set("m.k", 2)
                  .set("plain", 1.5)
                  .remove("m.text")
                  .addKey("n", std::string("now a key"))
                  .commit(here)
                  .empty());
  EXPECT_EQ(db->number("select max(revision) from journal"), before + 1);
  EXPECT_TRUE(eventually([&] { return contentsOf(there) == contentsOf(here); }));
  EXPECT_EQ(contentsOf(open()), contentsOf(here));
  EXPECT_EQ(there->get<std::string>("n"), "now a key");
  EXPECT_EQ(there->get<int>("m.k"), 2);
}

TEST_F(StoredChanges, WhatCannotBeStoredTogetherOrAtAllChangesNothing) {
  directory.write("factory.xml",
                  "<settings version=\"1\"><node name=\"f\"><key name=\"k\" type=\"int\"/></node>"
                  "<node name=\"l\" locked=\"true\"/></settings>");
  const NodePtr root = openTree(storeIn(directory.path()), directory.path());
  const std::string before = textOf(root);
  for (const TreeChanges& changes : {
           TreeChanges().addKey("x", 1).remove("f.k"),
           TreeChanges().addKey("x", 1).move("f", "g"),
           TreeChanges().addKey("x", 1).set("f.k", 1, "factory"),
           TreeChanges().addKey("x", 1, "factory"),
           TreeChanges().addKey("x", 1).addNode("l.below"),
           TreeChanges().addKey("x", 1).set("f.k", std::string("text")),
           TreeChanges().addKey("x", 1).addKey("x", 2),
           TreeChanges().addKey("x", 1).addKey("bad-name", 2),
           TreeChanges().addKey("x", 1).unset("f.k"),
           TreeChanges().addKey("x", 1).set("f.k", 1, "no level"),
           TreeChanges().addKey("x", 1).addNode("f.k.n"),
           TreeChanges().addKey("x", 1).remove("none"),
           TreeChanges().addNode("x").move("x", "x.y"),
       }) {
    const SettingsProblems problems = changes.commit(root);
    EXPECT_EQ(problems.size(), 1u);
    EXPECT_EQ(textOf(root), before);
  }
  shell()->execute("drop table settings");
  EXPECT_THROW(TreeChanges().addKey("x", 1).commit(root), Failure<StoreFailure>);
  EXPECT_EQ(textOf(root), before);
}

TEST(TreeChanges, ThousandsInOneNodeAreStillOneChange) {
  const SettingsPtr root = newTree();
  TreeChanges changes;
  for (int i = 0; i < 3000; ++i) changes.addKey("k" + std::to_string(i), i);
  EXPECT_TRUE(changes.commit(root).empty());
  EXPECT_EQ(root->getChildren().size(), 3000u);
  EXPECT_EQ(intAt(root, "k2999"), 2999);
}

}  // namespace
}  // namespace test
