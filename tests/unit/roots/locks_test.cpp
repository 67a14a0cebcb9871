// Locks of files of the workgroup and factory levels, in the tree of a context.
#include "service/locks.h"

#include "host/roots/context_trees.h"
#include "service/bound_key.h"
#include "service/explanation.h"
#include "service/new_key.h"
#include "service/settings_file.h"
#include "tests/support/settings_verbs.h"
#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings;

std::string file(const std::string& content) {
  return "<settings version=\"1\">\n" + content + "</settings>\n";
}

class Locks : public testing::Test {
 protected:
  SettingsPtr makeTree() {
    return host::makeContextTree(zlutil::contextmgr::BlessedZcrID,
                                 {user_.path(), workgroup_.path(), factory_.path()});
  }

  // The user's values are set before the administrator locks them.
  void setUnlocked() {
    factory_.write("a.xml", file("<node name=\"n\">\n<key name=\"k\" type=\"int\">"
                                 "<value>1</value></key>\n<node name=\"below\"/></node>"
                                 "<key name=\"free\" type=\"int\"><value>1</value></key>"));
    const SettingsPtr root = makeTree();
    root->set("n.k", 2);
    addNode(root->getChild("n"), "own");
  }

  const TemporaryDirectory user_, workgroup_, factory_;
};

// Of a key without a value at any level below the lock, nothing is left.
TEST_F(Locks, ValuesAboveALockAreKeptAndHaveNoEffect) {
  setUnlocked();
  workgroup_.write("w.xml", file("<node name=\"n\" locked=\"true\" reason=\"A &lt; B\">\n"
                                 "  <key name=\"bare\" type=\"int\"/></node>"));
  const SettingsPtr root = makeTree(), key = root->getChild("n")->getChild("k");
  const std::unique_ptr<BoundKey> bound = bindKey(root, {"n", "k"});
  boost::any value;
  EXPECT_TRUE(bound->getValue(BoundKey::kEffective, value));
  EXPECT_EQ(boost::any_cast<int>(value), 1);
  EXPECT_EQ(root->get<int>("n.k"), 1);
  EXPECT_EQ(root->get<int>("n.k", "user"), 2);
  EXPECT_EQ(effectiveLevelOf(key), "factory");
  EXPECT_FALSE(root->find<int>("n.bare"));
  EXPECT_EQ(root->get<int>("free"), 1);
  const std::optional<SettingLock> lock = lockOf(key);
  ASSERT_TRUE(lock);
  EXPECT_EQ(lock->path, "n");
  EXPECT_EQ(lock->level, "workgroup");
  EXPECT_EQ(lock->reason, "A < B");
  EXPECT_EQ(lock->source, workgroup_.file("w.xml") + ":2:1");
  EXPECT_FALSE(lockOf(root->getChild("free")));
  const Explanation explanation = explainKey(key);
  EXPECT_EQ(explanation.lock->source, lock->source);
  EXPECT_TRUE(explanation.levels[1].isLocked && !explanation.levels[1].isInEffect);
  EXPECT_TRUE(explanation.levels[3].isInEffect && !explanation.levels[2].isLocked);
  // A copy reads the same and is free; without the lock the user's value counts again.
  root->copySubtree(root->getChild("n"), "copy");
  EXPECT_EQ(root->get<int>("copy.k"), 1);
  EXPECT_TRUE(isWritable(root->getChild("copy"), "user"));
  workgroup_.write("w.xml", file(""));
  EXPECT_EQ(makeTree()->get<int>("n.k"), 2);
}

TEST_F(Locks, ChangesAboveALockAreRefusedWithFileLineAndReason) {
  setUnlocked();
  factory_.write("b.xml", file("<node name=\"n\">\n<key name=\"k\" type=\"int\" locked=\"true\" "
                               "reason=\"policy 7\"/></node>"));
  workgroup_.write("w.xml", file("<node name=\"n\" locked=\"true\"/>"));
  const SettingsPtr root = makeTree(), node = root->getChild("n");
  const auto key = node->getChild("k");
  const auto bound = bindKey(root, {"n", "k"});
  const std::string policy = "\"n.k\" is locked in " + factory_.file("b.xml") + ":3:1: policy 7.";
  const std::string onNode = "\"n\" is locked in " + workgroup_.file("w.xml") + ":2:1.";
  const struct {
    const char* what;
    std::function<void()> change;
    std::string reason;
  } cases[] = {
      {"set", [&] { node->setAny("k", 3, "user"); }, policy},
      {"set for the session", [&] { node->setAny("k", 3, "session"); }, policy},
      {"unset", [&] { node->unset("k", "user"); }, policy},
      {"attach", [&] { addKey(node, "late"); }, onNode},
      {"attach deeper", [&] { addKey(node->getChild("below"), "late"); }, onNode},
      {"add with a value", [&] { NewKey::add(node, "late", {}, 1, "user"); }, onNode},
      {"copy", [&] { node->copySubtree(node->getChild("below"), "late"); }, onNode},
      {"remove", [&] { node->removeNode("own"); }, onNode},
  };
  for (const auto& [what, change, reason] : cases) {
    const std::string message = messageOf<CantModifyValuesOnReadOnlyLevel>(change);
    EXPECT_NE(message.find(reason), std::string::npos) << what << ": " << message;
  }
  const SettingsProblems problems = setAll(root, {{key, 3}, {root->getChild("free"), 3}}, "user");
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_NE(problems[0].second.find(policy), std::string::npos) << problems[0].second;
  boost::any value = 3;
  EXPECT_FALSE(bound->setAny(0, value) || bound->setNumber(0, 7, 3) || bound->unset(0));
  EXPECT_EQ(root->get<int>("n.k"), 1);
  EXPECT_EQ(root->get<int>("n.k", "user"), 2);
  EXPECT_EQ(root->get<int>("free"), 1);
  for (const char* level : {"session", "user", "workgroup", "factory"}) {
    EXPECT_FALSE(isWritable(key, level)) << level;
    EXPECT_EQ(isWritable(root->getChild("free"), level), *level == 's' || *level == 'u') << level;
  }
}

TEST_F(Locks, AFileThatIsLoadedLocksItsOwnTreeAndIsWrittenBack) {
  const std::string path = factory_.write(
      "f.xml", file("  <node name=\"n\" locked=\"true\" reason=\"a &quot;b&quot;\">\n"
                    "    <key name=\"k\" type=\"int\">\n      <value level=\"user\">1</value>\n"
                    "      <value level=\"factory\">2</value>\n    </key>\n  </node>\n"));
  const SettingsPtr root = Settings::importAsStandaloneObject(base::to_ustring(path));
  EXPECT_EQ(root->get<int>("n.k"), 2);
  EXPECT_TRUE(isWritable(root->getChild("n"), "factory") &&
              !isWritable(root->getChild("n"), "user"));
  const auto again = [&](const Names& levels) { return SettingsFile::text(root, levels); };
  EXPECT_NE(again({"user", "factory"}).find("locked=\"true\" reason=\"a &quot;b&quot;\""),
            std::string::npos);
  EXPECT_EQ(again({"user"}).find("locked"), std::string::npos);
  for (const char* wrong : {"locked=\"yes\"", "reason=\"x\"", "locked=\"false\" reason=\"x\""}) {
    factory_.write("f.xml", file(std::string("<key name=\"k\" ") + wrong + "/>"));
    messageOf<SaxParseException>(
        [&] { Settings::importAsStandaloneObject(base::to_ustring(path)); });
  }
}

}  // namespace
}  // namespace test
