// Reading, changing and hearing settings of a shared level.
#include <sys/wait.h>
#include <unistd.h>

#include "tests/cluster/shared_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

TEST_F(SharedStoreTest, AChangeOfAnotherMachineIsHeardAndOneOfThisMachineIsWritten) {
  const NodePtr root = openShared(options());
  EXPECT_EQ(sizeOf(root), 14);
  const Listener listener(root);
  etcd.put(kKey, intDocument(16));
  EXPECT_EQ(listener.waitFor(1), Names{"changed fontSize"});
  editorOf(root)->setAny("fontSize", 18, "workgroup");
  EXPECT_EQ(sizeOf(root), 18);
  const auto document = nlohmann::json::parse(etcd.valueOf(kKey));
  EXPECT_EQ(document["value"], 18);
  EXPECT_EQ(document["type"], "int");
  for (const char* origin : {"by", "at", "on"}) EXPECT_NE(document[origin], "") << origin;
  editorOf(root)->unset("fontSize", "workgroup");
  EXPECT_FALSE(nlohmann::json::parse(etcd.valueOf(kKey)).contains("value"));
  EXPECT_FALSE(editorOf(root)->isSet("fontSize", ""));
  etcd.erase(kKey);
  EXPECT_TRUE(eventually([&] { return root->getChildren().empty(); }));
}

TEST_F(SharedStoreTest, AValueBringsTheDefinitionsThatOnlyThisUserHas) {
  using zlutil::settings::JValidator;
  JValidator::acceptUnchecked();
  const NodePtr root = openShared(options());
  const SettingsPtr node = addNode(root, "own", JValidator("c", "a"));
  addKey(node, "k");
  messageOf<StoreFailure>([&] {
    etcd.setError(8, "etcdserver: mvcc: database space exceeded");
    node->setAny("k", 1, "workgroup");
  });
  etcd.setError(0, "");
  EXPECT_TRUE(canSet(node, "k", 1));
  EXPECT_EQ(nlohmann::json::parse(etcd.valueOf("/team/settings/own"))["validator"]["java"][0], "c");
  const NodePtr other = openShared(options());
  EXPECT_EQ(intAt(other->getChild("own"), "k"), 1);
  messageOf<CantModifyValuesOnReadOnlyLevel>([&] { root->removeNode("own"); });
  root->copySubtree(node, "copy");
  EXPECT_EQ(intAt(root->getChild("copy"), "k", "user"), 1);
  EXPECT_EQ(etcd.valueOf("/team/settings/copy/k"), "");
  zlutil::settings::NewKey::add(other->getChild("own"), "first", ValidatorChoice(), 2, "workgroup");
  EXPECT_TRUE(eventually([&] { return node->getChild("first") && intAt(node, "first") == 2; }));
}

TEST_F(SharedStoreTest, AKeyThatIsNoSettingIsReportedAndTheOthersAreUsed) {
  etcd.put("/team/settings/9lives", "x");
  etcd.put("/team/settings/broken", "{\"type\":\"int\",\"value\":\"x\"}");
  NodePtr root;
  const std::string report = reportOfOpening(root, options());
  EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 2) << report;
  EXPECT_EQ(namesOf(root->getChildren()), Names{"editor"});
  etcd.put("/team/settings/broken", intDocument(3));
  EXPECT_TRUE(eventually([&] { return root->getChild("broken") && intAt(root, "broken") == 3; }));
}

TEST_F(SharedStoreTest, WithoutTheNetworkTheCopyIsUsedAndWritesFailAtOnce) {
  { const NodePtr root = openShared(options()); }
  etcd.close();
  NodePtr root;
  const std::string report = reportOfOpening(root, optionsForStartAway());
  EXPECT_NE(report.find("the copy that was current"), std::string::npos) << report;
  EXPECT_EQ(sizeOf(root), 14);
  const std::string message =
      messageOf<StoreFailure>([&] { editorOf(root)->setAny("fontSize", 1, "workgroup"); });
  EXPECT_NE(message.find("The change was not made"), std::string::npos) << message;
  EXPECT_EQ(sizeOf(root), 14);
  const Listener listener(root);
  etcd.put(kKey, intDocument(40));
  etcd.open();
  EXPECT_EQ(listener.waitFor(1), Names{"changed fontSize"});
  EXPECT_TRUE(canSet(editorOf(root), "fontSize", 41));
}

TEST_F(SharedStoreTest, AChildOfAForkCanCloseTheTreeAndTheParentStillHears) {
  NodePtr root = openShared(options());
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    root.reset();
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  etcd.put(kKey, intDocument(15));
  EXPECT_TRUE(eventually([&] { return sizeOf(root) == 15; }));
}

}  // namespace
}  // namespace test
