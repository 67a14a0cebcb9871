#include "tests/contract/service_contract.h"

namespace test {
namespace {

using zlutil::eventmgr::ScopedConnection;
using zlutil::settings::SettingsValueChangeEvent;

TEST_P(ServiceContract, AListenerHearsOfItsEntryAndEverythingBelow) {
  const SettingsPtr node = addNode(root, "n"), sibling = addNode(root, "sibling");
  const SettingsPtr key = addKey(node, "k");
  Listener atRoot(root), atNode(node), atKey(key), atSibling(sibling);
  node->setAny("k", 1, "user");
  node->unset("k", "user");
  addKey(node, "l");
  node->removeKey("l");
  const Names all = {"changed k", "changed k", "added l to n", "removed l from n"};
  EXPECT_EQ(atRoot.heard(), all);
  EXPECT_EQ(atNode.heard(), all);
  EXPECT_EQ(atKey.heard(), (Names{"changed k", "changed k"}));
  EXPECT_EQ(atSibling.heard(), Names());
}

TEST_P(ServiceContract, RemovingASubtreeIsOneEventHeardAboveAndBelow) {
  const SettingsPtr node = addNode(root, "n"), below = addNode(node, "m"), key = addKey(below, "k");
  Listener atRoot(root), atNode(node), atKey(key);
  root->removeNode("n");
  const Names removed = {"removed n from " + root->getName()};
  EXPECT_EQ(atRoot.heard(), removed);
  EXPECT_EQ(atNode.heard(), removed);
  EXPECT_EQ(atKey.heard(), removed);
}

TEST_P(ServiceContract, ThePathOfARemovedEntryResolvesNowhere) {
  const SettingsPtr node = addNode(addNode(root, "a"), "b"), key = addKey(node, "k");
  root->getChild("a")->removeNode("b");
  const SettingsPtr other = addKey(addNode(root, "b"), "k");
  const std::vector<std::pair<std::string, boost::any>> changes = {{key->getPath(), 7}};
  EXPECT_EQ(root->multipleSet(changes.begin(), changes.end(), "user").size(), 1u) << key->getPath();
  EXPECT_FALSE(root->getChild("b")->isSet("k", "user"));
}

TEST_P(ServiceContract, TheChangeIsVisibleWhenItsEventArrives) {
  addKey(root, "k");
  int seen = 0;
  ScopedConnection connection(
      root->addListener<SettingsValueChangeEvent>([&](const SettingsValueChangeEvent& event) {
        seen = intAt(event.getObj()->getParent(), "k");
      }));
  root->setAny("k", 3, "user");
  EXPECT_EQ(seen, 3);
}

TEST_P(ServiceContract, AListenerMayCallEveryOperation) {
  addKey(root, "k");
  addKey(root, "l");
  int calls = 0;
  std::unique_ptr<ScopedConnection> connection;
  connection = std::make_unique<ScopedConnection>(
      root->addListener<SettingsValueChangeEvent>([&](const SettingsValueChangeEvent& event) {
        ++calls;
        if (event.getObj()->getName() != "k") return;
        root->setAny("l", calls, "user");
        addNode(root, "n" + std::to_string(calls));
        root->removeNode("n" + std::to_string(calls));
        connection.reset();
      }));
  root->setAny("k", 1, "user");
  EXPECT_EQ(calls, 2);
  root->setAny("k", 2, "user");
  EXPECT_EQ(calls, 2);
}

TEST_P(ServiceContract, AThrowingListenerStopsNeitherTheOthersNorTheChange) {
  addKey(root, "k");
  ScopedConnection bad(root->addListener<SettingsValueChangeEvent>(
      [](const SettingsValueChangeEvent&) { throw 1; }));
  Listener good(root);
  root->setAny("k", 1, "user");
  EXPECT_EQ(good.heard(), Names{"changed k"});
  EXPECT_EQ(intAt(root, "k"), 1);
}

TEST_P(ServiceContract, AListenerEndedByAnotherIsNotCalledAnyMore) {
  addKey(root, "k");
  int calls = 0;
  std::unique_ptr<ScopedConnection> second;
  ScopedConnection first(root->addListener<SettingsValueChangeEvent>(
      [&](const SettingsValueChangeEvent&) { second.reset(); }));
  second = std::make_unique<ScopedConnection>(root->addListener<SettingsValueChangeEvent>(
      [&](const SettingsValueChangeEvent&) { ++calls; }));
  root->setAny("k", 1, "user");
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace test
