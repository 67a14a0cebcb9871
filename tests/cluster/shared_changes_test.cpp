// Changes that conflict, are refused, or whose answers are lost.
#include "tests/cluster/shared_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

TEST_F(SharedStoreTest, AConflictIsResolvedAsWithTheUserStore) {
  const NodePtr root = openShared(options());
  int others = 0;
  const auto interfere = [&](const std::string& document) {
    etcd.setBeforeTxn([&, document] {
      if (others++ == 0) etcd.put(kKey, document);
    });
  };
  interfere(intDocument(20));
  editorOf(root)->setAny("fontSize", 22, "workgroup");
  EXPECT_EQ(others, 2);
  EXPECT_EQ(nlohmann::json::parse(etcd.valueOf(kKey))["value"], 22);
  EXPECT_EQ(sizeOf(root), 22);
  // The document keeps a validator that it has got meanwhile.
  others = 0;
  interfere("{\"type\":\"int\",\"value\":1,\"validator\":{\"java\":[\"c\",\"a\"]}}");
  editorOf(root)->setAny("fontSize", 23, "workgroup");
  EXPECT_TRUE(nlohmann::json::parse(etcd.valueOf(kKey)).contains("validator"));
  others = 2;
  // Of another type meanwhile, after it was removed: the change has become impossible.
  etcd.setBeforeTxn([&] {
    if (others++ != 2) return;
    etcd.put("/team/settings/editor/added", "{\"type\":\"string\",\"value\":\"x\"}");
  });
  messageOf<ErrorAddingChildNodeOrKey>([&] {
    zlutil::settings::NewKey::add(editorOf(root), "added", ValidatorChoice(), 1, "workgroup");
  });
  EXPECT_EQ(boost::any_cast<std::string>(editorOf(root)->getValue("added", "")), "x");
}

TEST_F(SharedStoreTest, ALostAnswerIsFoundAndTheChangeIsMadeOnce) {
  const NodePtr root = openShared(options());
  const std::int64_t before = etcd.revision();
  bool isLost = false, isOverwritten = false;
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != kTxn || isLost) return;
    isLost = true;
    answer.sent = 0;
    if (isOverwritten) etcd.put(kKey, intDocument(30));
  });
  editorOf(root)->setAny("fontSize", 28, "workgroup");
  EXPECT_TRUE(isLost);
  EXPECT_EQ(etcd.revision(), before + 1);
  EXPECT_EQ(sizeOf(root), 28);
  isLost = false;
  isOverwritten = true;
  editorOf(root)->setAny("fontSize", 29, "workgroup");
  EXPECT_EQ(etcd.revision(), before + 3);
  EXPECT_TRUE(eventually([&] { return sizeOf(root) == 30; })) << sizeOf(root);
}

TEST_F(SharedStoreTest, AChangeThatMayHaveBeenMadeIsNotReportedAsRefused) {
  const NodePtr root = openShared(options());
  int value = 28;
  const auto set = [&] { editorOf(root)->setAny("fontSize", value++, "workgroup"); };
  std::function<void(FakeEtcd::Answer&)> onFirst;
  bool hasCome = false;
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path == kTxn && !std::exchange(hasCome, true)) onFirst(answer);
  });
  onFirst = [&](FakeEtcd::Answer& answer) {
    answer.sent = 0;
    etcd.setError(7, "etcdserver: permission denied");
  };
  EXPECT_NE(messageOf<StoreFailure>(set).find("not known"), std::string::npos);
  etcd.setError(0, "");
  EXPECT_TRUE(eventually([&] { return sizeOf(root) == 28; }));
  // The history that would tell is compacted.
  onFirst = [&](FakeEtcd::Answer& answer) {
    answer.sent = 0;
    etcd.put(kKey, intDocument(30));
    etcd.setKnob([](const std::string& path, FakeEtcd::Answer& range) {
      if (path != kTxn) range = {400, "{\"error\":\"etcdserver: compacted\",\"code\":11}"};
    });
  };
  hasCome = false;
  EXPECT_NE(messageOf<StoreFailure>(set).find("not known"), std::string::npos);
  // A server that is busy is asked again.
  hasCome = false;
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != kTxn || std::exchange(hasCome, true)) return;
    answer = {429, "{\"error\":\"etcdserver: too many requests\",\"code\":8}"};
  });
  EXPECT_TRUE(eventually([&] { return sizeOf(root) == 30; }));
  value = 33;
  set();
  EXPECT_EQ(sizeOf(root), 33);
}

TEST_F(SharedStoreTest, ARefusalHasTheReasonOfEtcdAndChangesNothing) {
  const NodePtr root = openShared(options());
  const SettingsPtr editor = editorOf(root), key = editor->getChild("fontSize");
  const auto set = [&] { editor->setAny("fontSize", 1, "workgroup"); };
  const auto has = [](const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
  };
  etcd.setError(7, "etcdserver: permission denied");
  EXPECT_TRUE(has(messageOf<CantModifyValuesOnReadOnlyLevel>(set), "permission denied"));
  const auto problems = setAll(root, {{key, 1}}, "workgroup");
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_TRUE(has(problems.front().second, "permission denied"));
  etcd.setError(3, "etcdserver: too many operations in txn request");
  EXPECT_TRUE(has(messageOf<StoreFailure>(set), "--max-txn-ops"));
  etcd.setError(3, "etcdserver: request is too large");
  EXPECT_TRUE(has(messageOf<StoreFailure>(set), "--max-request-bytes"));
  etcd.setError(0, "");
  EXPECT_EQ(sizeOf(root), 14);
  EXPECT_TRUE(canSet(editor, "fontSize", 1));
  EXPECT_EQ(sizeOf(root), 1);
}

TEST_F(SharedStoreTest, ARequestThatTheLibraryHasSentTwiceIsNotReportedAsRefused) {
  const NodePtr root = openShared(options());
  editorOf(root)->setAny("fontSize", 15, "workgroup");  // the connection is kept
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != kTxn) return;
    answer.sent = 0;
    etcd.setError(7, "etcdserver: permission denied");
    etcd.setKnob({});
  });
  EXPECT_NE(messageOf<StoreFailure>([&] {
              editorOf(root)->setAny("fontSize", 16, "workgroup");
            }).find("not known"),
            std::string::npos);
  etcd.setError(0, "");
  EXPECT_TRUE(eventually([&] { return sizeOf(root) == 16; }));
}

TEST_F(SharedStoreTest, AConflictShowsTheWholeTransactionOfOthers) {
  etcd.put("/team/settings/other", intDocument(1));
  const NodePtr root = openShared(options());
  etcd.holdEvents(true);
  etcd.putAll({{kKey, intDocument(2)}, {"/team/settings/other", intDocument(2)}});
  editorOf(root)->setAny("fontSize", 3, "workgroup");
  EXPECT_EQ(sizeOf(root), 3);
  EXPECT_EQ(intAt(root, "other"), 2);
  editorOf(root)->setAny("fontSize", 4, "workgroup");
  EXPECT_EQ(etcd.requests(kTxn), 3);  // the tree knows its own change
}

TEST_F(SharedStoreTest, EventsThatAreOlderThanAChangeOfThisProcessDoNotTakeItBack) {
  const NodePtr root = openShared(options());
  etcd.holdEvents(true);
  etcd.erase(kKey);  // for the watch the node is empty then
  zlutil::settings::NewKey::add(editorOf(root), "added", ValidatorChoice(), 4, "workgroup");
  const Listener listener(root);
  etcd.holdEvents(false);
  etcd.put("/team/settings/last", intDocument(5));
  EXPECT_EQ(listener.waitFor(3),
            (Names{"removed fontSize from editor", "added last to settings", "changed last"}));
  EXPECT_EQ(namesOf(editorOf(root)->getChildren()), Names{"added"});
}

TEST_F(SharedStoreTest, AChangeThatOthersConflictWithAllTheTimeEndsInABoundedTime) {
  SharedStoreOptions chosen = options();
  chosen.longestChange = std::chrono::milliseconds(200);
  const NodePtr root = openShared(chosen);
  // The server is slow; it may still be at work when the change has ended.
  const auto value = std::make_shared<std::atomic<int>>(100);
  etcd.setBeforeTxn([this, value] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    etcd.put(kKey, intDocument((*value)++));
  });
  messageOf<StoreFailure>([&] { editorOf(root)->setAny("fontSize", -1, "workgroup"); });
  EXPECT_LE(etcd.requests(kTxn), 5);
}

TEST_F(SharedStoreTest, AChangeWaitsForANewLeaderAlsoIfItNeedsATokenFirst) {
  const SharedStoreOptions chosen = optionsWithPassword();
  etcd.demandTokens();
  const NodePtr root = openShared(chosen);
  std::atomic<int> refusals{0};
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != "/v3/auth/authenticate" || ++refusals > 5) return;
    answer = {503, "{\"error\":\"etcdserver: leader changed\",\"code\":14}"};
  });
  etcd.demandTokens();
  editorOf(root)->setAny("fontSize", 15, "workgroup");
  EXPECT_GT(refusals, 5);
  EXPECT_EQ(sizeOf(root), 15);
  etcd.setKnob({});
}

TEST_F(SharedStoreTest, ALostAnswerIsLookedForInABoundedPartOfTheHistory) {
  const NodePtr root = openShared(options());
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != kTxn) return;
    answer.sent = 0;
    for (int value = 0; value < 1000; ++value) etcd.put(kKey, intDocument(value));
    etcd.setKnob({});
  });
  const int before = etcd.requests(kRange);
  const std::string unclear =
      messageOf<StoreFailure>([&] { editorOf(root)->setAny("fontSize", -1, "workgroup"); });
  EXPECT_NE(unclear.find("not known"), std::string::npos) << unclear;
  EXPECT_LT(etcd.requests(kRange) - before, 100);
}

TEST_F(SharedStoreTest, ARemovalTakesAllBelowIfTheTreeKnowsAllOfIt) {
  etcd.put("/team/settings/editor/inner/k", intDocument(1));
  etcd.put("/team/settings/editorial", intDocument(1));
  SharedStore store(options());
  const NodePtr root = boost::make_shared<Node>(Tree::makeStandalone(), "s", true, ValidatorPtr());
  store.readAll(*root, kWorkgroup);
  std::string heard;
  bool isPossible = false;
  const auto receive = [&](const ExternalChanges& external) {
    for (const Change& change : external.changes) {
      if (const auto* put = std::get_if<PutValue>(&change)) heard += put->path + ' ';
    }
    return isPossible;
  };
  etcd.setBeforeTxn([&] {
    etcd.setBeforeTxn({});
    etcd.put("/team/settings/editor/late", intDocument(2));
  });
  EXPECT_FALSE(store.apply({RemoveSubtree{"editor"}}, receive));
  EXPECT_EQ(heard, "editor.late ");
  EXPECT_EQ(etcd.valueOf(kKey), intDocument(14));
  isPossible = true;
  EXPECT_TRUE(store.apply({PutValue{"editor.new", 1}, RemoveSubtree{"editor"}}, receive));
  for (const char* key : {"fontSize", "inner/k", "late", "new"}) {
    EXPECT_EQ(etcd.valueOf(std::string("/team/settings/editor/") + key), "") << key;
  }
  EXPECT_EQ(etcd.valueOf("/team/settings/editorial"), intDocument(1));
  for (const char* path : {"editorial", "editorial.k"}) {
    messageOf<StoreFailure>([&] {
      store.apply({RemoveSubtree{"editorial"}, PutValue{path, 1}}, receive);
    });
  }
  // The answer is lost; and once more, with others who set the entry anew meanwhile.
  bool isSetAnew = false;
  const auto loseAnswer = [&] {
    etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
      if (path != kTxn) return;
      answer.sent = 0;
      etcd.setKnob({});
      if (isSetAnew) etcd.put("/team/settings/other", intDocument(3));
    });
  };
  loseAnswer();
  EXPECT_TRUE(store.apply({RemoveSubtree{"editorial"}}, receive));
  isSetAnew = true;
  loseAnswer();
  EXPECT_NE(messageOf<StoreFailure>([&] {
              store.apply({RemoveSubtree{"other"}}, receive);
            }).find("not known"),
            std::string::npos);
}

}  // namespace
}  // namespace test
