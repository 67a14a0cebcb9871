#include "tests/contract/service_contract.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using zlutil::settings::ZSettings;

TEST_P(ServiceContract, ChildrenAreFoundByNameAndListedInNameOrder) {
  const SettingsPtr node = addNode(root, "n");
  for (const char* name : {"b", "a10", "B", "a2"}) addKey(node, name);
  addNode(node, "c");
  EXPECT_EQ(namesOf(node->getChildren()), (Names{"B", "a10", "a2", "b", "c"}));
  EXPECT_EQ(root->findDescendant({"n", "a2"}), node->getChild("a2"));
  EXPECT_EQ(node->findDescendant({}), node);
  EXPECT_EQ(root->getChild("x"), nullptr);
  EXPECT_EQ(root->findDescendant({"n", "b", "x"}), nullptr);
  EXPECT_EQ(root->findDescendant({"n", "", "x"}), nullptr);
}

TEST_P(ServiceContract, AKeyHasNoChildren) {
  const SettingsPtr key = addKey(root, "k"), node = addNode(root, "n");
  EXPECT_EQ(key->getChildren(), std::vector<SettingsPtr>());
  EXPECT_EQ(key->getChild("x"), nullptr);
  EXPECT_EQ(key->findDescendant({"x"}), nullptr);
  EXPECT_EQ(key->findDescendant({}), key);
  messageOf<NoSuchKey>([&] { key->getValue("x", ""); });
  messageOf<NoSuchKey>([&] { key->isSet("x", ""); });
  messageOf<NoSuchKey>([&] { key->getKeyType("x"); });
  messageOf<NoSuchKey>([&] { key->setAny("x", 1, "user"); });
  messageOf<NoSuchKey>([&] { key->unset("x", "user"); });
  messageOf<NoSuchKey>([&] { key->removeKey("x"); });
  messageOf<NoSuchNode>([&] { key->removeNode("x"); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { key->copySubtree(node, "x"); });
}

TEST_P(ServiceContract, AnEntryKnowsItsParentAndItsProperties) {
  const SettingsPtr node = addNode(root, "n"), key = addKey(node, "k");
  EXPECT_TRUE(root->isRoot());
  EXPECT_EQ(root->getParent(), nullptr);
  EXPECT_FALSE(node->isRoot());
  EXPECT_FALSE(node->isKey());
  EXPECT_TRUE(key->isKey());
  EXPECT_EQ(key->getParent(), node);
  EXPECT_EQ(key->getSharedSelf(), key);
  EXPECT_NE(key->getID(), node->getID());
  EXPECT_EQ(key->getZcrID(), root->getZcrID());
  const SettingsPtr silent = ZSettings::createSettingsNode("s", true, false, ValidatorChoice());
  silent->attachTo(root);
  EXPECT_FALSE(silent->canHaveListeners());
  EXPECT_EQ(silent->addListener<zlutil::settings::SettingsValueChangeEvent>([](auto&) {}).get(),
            nullptr);
}

TEST_P(ServiceContract, OnlyAFreshEntryWithAFreeNameIsAttached) {
  const SettingsPtr key = addKey(root, "k");
  const auto make = [](const char* name, bool isKey) {
    return ZSettings::createSettingsNode(name, isKey, true, ValidatorChoice());
  };
  for (const char* bad : {"", "1a", "a.b", "a b", "_a", "\xC3\xA4"}) {
    messageOf<NotAKeyName>([&] { make(bad, true)->attachTo(root); });
    messageOf<NotANodeName>([&] { make(bad, false)->attachTo(root); });
  }
  messageOf<NotAKeyName>([&] { make(std::string(64, 'a').c_str(), true)->attachTo(root); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { make("k", false)->attachTo(root); });
  messageOf<NotANodeName>([&] { make("x", true)->attachTo(key); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { make("x", true)->attachTo(nullptr); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { key->attachTo(addNode(root, "other")); });
  EXPECT_EQ(namesOf(root->getChildren()), (Names{"k", "other"}));
  addKey(root, std::string(63, 'a'));
  // A tree that was built apart is attached whole.
  const SettingsPtr apart = make("apart", false);
  addKey(apart, "x");
  apart->setAny("x", 1, "user");
  apart->attachTo(root);
  EXPECT_EQ(root->findDescendant({"apart", "x"})->getZcrID(), root->getZcrID());
  EXPECT_EQ(intAt(root->getChild("apart"), "x"), 1);
  messageOf<ErrorAddingChildNodeOrKey>([&] {
    const SettingsPtr top = make("top", false);
    top->attachTo(addNode(top, "below"));
  });
}

TEST_P(ServiceContract, ATreeIsAtMost200EntriesDeep) {
  SettingsPtr node = root;
  for (int depth = 1; depth <= 200; ++depth) node = addNode(node, "n");
  messageOf<ValidationFailure>([&] { addKey(node, "k"); });
  messageOf<ValidationFailure>([&] { root->copySubtree(root, "copy"); });
  addKey(node->getParent(), "k");
}

TEST_P(ServiceContract, ARemovedEntryStaysReadableAndCannotBeChanged) {
  const SettingsPtr node = addNode(root, "n"), below = addNode(node, "m");
  addKey(below, "k");
  below->setAny("k", 1, "user");
  messageOf<NotAKeyName>([&] { root->removeKey("n"); });
  messageOf<NotANodeName>([&] { below->removeNode("k"); });
  messageOf<NoSuchNode>([&] { root->removeNode("x"); });
  messageOf<NoSuchKey>([&] { root->removeKey("x"); });
  root->removeNode("n");
  EXPECT_EQ(root->getChild("n"), nullptr);
  EXPECT_EQ(node->getParent(), nullptr);
  EXPECT_FALSE(node->isRoot());
  EXPECT_EQ(below->getParent(), node);
  EXPECT_EQ(intAt(below, "k"), 1);
  messageOf<NoSuchKey>([&] { below->setAny("k", 2, "user"); });
  messageOf<NoSuchKey>([&] { below->unset("k", "user"); });
  messageOf<NoSuchKey>([&] { below->removeKey("k"); });
  messageOf<NoSuchNode>([&] { addKey(below, "x"); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { node->attachTo(root); });
  addNode(root, "n");
  EXPECT_EQ(root->findDescendant({"n", "m"}), nullptr);
}

TEST_P(ServiceContract, AnEntryOutlivesTheNodesAboveIt) {
  SettingsPtr top = ZSettings::createSettingsNode("top", false, true, ValidatorChoice());
  const SettingsPtr node = addNode(top, "n");
  addKey(node, "k");
  top.reset();
  EXPECT_EQ(node->getParent(), nullptr);
  node->setAny("k", 1, "user");
  EXPECT_EQ(intAt(node, "k"), 1);
}

TEST_P(ServiceContract, ACopyReadsTheSameAsItsSource) {
  const SettingsPtr apart = ZSettings::createSettingsNode("a", false, true, ValidatorChoice());
  const SettingsPtr node = addNode(apart, "n");
  for (const char* name : {"f", "w", "u", "all"}) addKey(node, name);
  addKey(apart, "untyped");
  node->setAny("f", 1, "factory");
  node->setAny("w", 2, "workgroup");
  node->setAny("w", 3, "factory");
  node->setAny("u", 4, "user");
  node->setAny("u", 5, "factory");
  node->setAny("all", 6, "session");
  node->setAny("all", 7, "factory");
  Listener listener(root);
  root->copySubtree(apart, "copy");
  EXPECT_EQ(listener.heard(), (Names{"added copy to " + root->getName()}));
  const SettingsPtr copy = root->findDescendant({"copy", "n"});
  for (const SettingsPtr& key : node->getChildren()) {
    EXPECT_EQ(intAt(copy, key->getName()), intAt(node, key->getName())) << key->getName();
  }
  copy->unset("all", "session");
  EXPECT_EQ(intAt(copy, "all"), 7);
  EXPECT_FALSE(root->getChild("copy")->getKeyType("untyped"));
  EXPECT_NE(copy->getID(), node->getID());
}

TEST_P(ServiceContract, AnImpossibleCopyIsRefused) {
  const SettingsPtr node = addNode(root, "n");
  addNode(root, "empty");
  addKey(node, "k");
  messageOf<NoSuchNode>([&] { root->copySubtree(nullptr, "x"); });
  messageOf<NotANodeName>([&] { root->copySubtree(node->getChild("k"), "x"); });
  messageOf<NotANodeName>([&] { root->copySubtree(node, "a.b"); });
  messageOf<CannotMergeWithNodeContainsChildren>([&] { root->copySubtree(node, "n"); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { root->copySubtree(node, "empty"); });
  messageOf<ErrorAddingChildNodeOrKey>([&] { node->copySubtree(node, "k"); });
  // A copy into its own source has the content before the copy.
  node->copySubtree(node, "inner");
  EXPECT_EQ(namesOf(node->getChild("inner")->getChildren()), Names{"k"});
}

}  // namespace
}  // namespace test
