#include "tests/support/store_contract.h"

#include <boost/variant/get.hpp>

namespace test {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WritableStore);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ReadOnlyStore);

TEST_P(WritableStore, WhatIsKeptIsThereForTheNextTree) {
  zlutil::settings::JValidator::acceptUnchecked();
  {
    const NodePtr root = treeOver(open());
    const SettingsPtr node = addNode(root, "n", zlutil::settings::JValidator("c", "a"));
    addKey(node, "k");
    node->setAny("k", 1, "user");
    node->setAny("k", 2, "session");
    addKey(node, "unset");
    node->setAny("unset", 1, "user");
    node->unset("unset", "user");
    addNode(root, "gone");
    addKey(root->getChild("gone"), "k");
    root->removeNode("gone");
    setAll(root, {{node->getChild("k"), 3}}, "user");
    root->copySubtree(node, "copy");
  }
  const NodePtr root = treeOver(open());
  if (!open()->keepsChanges()) {
    EXPECT_TRUE(root->getChildren().empty());
    return;
  }
  EXPECT_EQ(namesOf(root->getChildren()), (Names{"copy", "n"}));
  const SettingsPtr node = root->getChild("n");
  EXPECT_EQ(intAt(node, "k"), 3);
  EXPECT_FALSE(node->isSet("unset", ""));
  EXPECT_EQ(intAt(root->getChild("copy"), "k"), 3);
  const auto choice = choiceOf(boost::static_pointer_cast<Entry>(node)->validator());
  EXPECT_EQ(boost::get<zlutil::settings::JValidator>(choice).second(), "a");
  root->removeNode("n");
}

TEST_P(ReadOnlyStore, EveryChangeIsRefusedWithTheReason) {
  const std::shared_ptr<Store> store = open();
  const NodePtr root = treeOver(store);
  messageOf<StoreFailure>([&] { store->apply({EraseValue{"k"}}, hearNothing()); });
  const std::string message =
      messageOf<CantModifyValuesOnReadOnlyLevel>([&] { addKey(root, "k"); });
  EXPECT_NE(message.find(store->readOnlyReason()), std::string::npos) << message;
  EXPECT_TRUE(root->getChildren().empty());
}

}  // namespace test
