// Following a cluster that fails, falls silent, or has forgotten what happened.
#include "tests/cluster/noting_listener.h"
#include "tests/cluster/shared_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

TEST_F(SharedStoreTest, AnAnswerThatIsCutAtAnyByteIsAskedForAgain) {
  std::size_t length = 0, cut = 0;
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != kRange || cut == std::string::npos) return;
    length = answer.body.size();
    answer.sent = cut;
    cut = std::string::npos;
  });
  for (std::size_t at = 0; at == 0 || at < length + 40; ++at) {
    cut = at;
    ClusterWatch watch(cluster());
    AnswerHeader header;
    ASSERT_EQ(watch.load(header, std::chrono::seconds(20)).size(), 1u) << at;
  }
}

TEST_F(SharedStoreTest, AnAnswerThatIsNotThatOfEtcdIsReportedOnceAndDoesNoHarm) {
  // Static, because the server may still be sending one when the test ends.
  static const std::string big = "{\"kvs\":[\"" + std::string(70u << 20, 'x') + "\"]}";
  static const FakeEtcd::Answer answers[] = {
      {200, ""},
      {200, "[]"},
      {200, "{\"header\":{},\"kvs\":[{\"key\":\"???\"}]}"},
      {200, "{\"header\":{\"revision\":\"-1\"},\"kvs\":{}}"},
      {200, std::string(1 << 20, '[')},
      {502, "<html>Bad Gateway</html>"},
      {302, "", std::string::npos, "Location: http://127.0.0.1:1/\r\n"},
      {500, "{\"error\":7}"},
      {200, big}};
  for (const FakeEtcd::Answer& wrong : answers) {
    etcd.setKnob([one = &wrong](const std::string&, FakeEtcd::Answer& answer) { answer = *one; });
    SharedStoreOptions chosen = optionsForStartAway();
    chosen.directory = "";
    NodePtr root;
    const std::string report = reportOfOpening(root, chosen);
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 1) << report;
    EXPECT_NE(report.find("this level is empty"), std::string::npos) << report;
    etcd.setKnob({});
    EXPECT_TRUE(eventually([&] { return sizeOf(root) == 14; })) << wrong.body.substr(0, 60);
  }
}

TEST_F(SharedStoreTest, EventsOfAListenerThatFailsAreReadAgain) {
  NotingListener listener(true);
  ClusterWatch watch(cluster());
  ASSERT_TRUE(watch.start(listener));
  ASSERT_TRUE(eventually([&] { return listener.loads() == 1 && etcd.requests(kWatch) == 1; }));
  etcd.put(kKey, intDocument(15));
  ASSERT_TRUE(eventually([&] { return listener.loads() == 2; }));
  EXPECT_EQ(listener.valueOf(kKey), intDocument(15));
}

TEST_F(SharedStoreTest, ChangesThatTheTreeCouldNotTakeAreReadAgain) {
  SharedStore store(options());
  const NodePtr root = boost::make_shared<Node>(Tree::makeStandalone(), "s", true, ValidatorPtr());
  store.readAll(*root, kWorkgroup);
  store.watch([] {});
  etcd.put(kKey, intDocument(15));
  ASSERT_TRUE(eventually([&] { return !store.isCurrent(); }));
  EXPECT_THROW(store.catchUp([](const auto&) -> bool { throw std::bad_alloc(); }), std::bad_alloc);
  bool hasEverything = false;
  EXPECT_TRUE(eventually([&] {
    store.catchUp(
        [&](const ExternalChanges& changes) { return hasEverything = changes.isEverything; });
    return hasEverything && store.isCurrent();
  }));
}

TEST_F(SharedStoreTest, AnAnswerThatIsTooLongIsAskedForInParts) {
  ClusterOptions narrow = cluster();
  narrow.longestAnswer = 20000;
  const auto keyOf = [](int i) { return "/team/settings/k" + std::to_string(i); };
  for (int i = 0; i < 100; ++i) etcd.put(keyOf(i), std::string(1000, 'x'));
  // All parts are of one revision, also if somebody changes a key between them.
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer&) {
    if (path == kRange) etcd.put(keyOf(0), "changed");
  });
  AnswerHeader header;
  const std::vector<KeyValue> items = ClusterWatch(narrow).load(header, std::chrono::seconds(20));
  etcd.setKnob({});
  EXPECT_EQ(items.size(), 101u);
  for (const KeyValue& item : items) {
    EXPECT_TRUE(item.key != keyOf(0) || item.modified == header.revision);
  }
  // A transaction whose events are longer than a line may be.
  NotingListener listener;
  ClusterWatch watch(narrow);
  ASSERT_TRUE(watch.start(listener));
  ASSERT_TRUE(eventually([&] { return listener.loads() == 1 && etcd.requests(kWatch) == 1; }));
  std::map<std::string, std::string> all;
  for (int i = 0; i < 100; ++i) all[keyOf(i)] = std::string(1000, 'y');
  etcd.putAll(all);
  EXPECT_TRUE(eventually([&] { return listener.valueOf(keyOf(99)) == all[keyOf(99)]; }));
  EXPECT_EQ(listener.loads(), 2);
  // One key alone.
  etcd.put(kKey, std::string(30000, 'x'));
  EXPECT_THROW(ClusterWatch(narrow).load(header, std::chrono::seconds(20)), ClusterError);
}

TEST_F(SharedStoreTest, AQuietLevelIsNotReadAnewAfterACompaction) {
  ClusterOptions impatient = cluster();
  impatient.quietTime = std::chrono::milliseconds(0);
  NotingListener listener;
  ClusterWatch watch(impatient);
  ASSERT_TRUE(watch.start(listener));
  ASSERT_TRUE(eventually([&] { return listener.loads() == 1; }));
  etcd.put("/team/settings/more", intDocument(1));
  etcd.erase("/team/settings/more");
  etcd.put("/another/team", "x");
  EXPECT_TRUE(eventually([&] { return listener.revision() == etcd.revision(); }));
  etcd.compact();
  etcd.close();
  etcd.open();
  etcd.put(kKey, intDocument(15));
  EXPECT_TRUE(eventually([&] { return listener.valueOf(kKey) == intDocument(15); }));
  EXPECT_EQ(listener.loads(), 1);
  // A stream that has got stuck is opened again, after a put as after a deletion.
  for (int opened = etcd.requests(kWatch); opened < 4; ++opened) {
    etcd.holdEvents(true);
    if (opened % 2 == 0) {
      etcd.put(kKey, intDocument(opened));
    } else {
      etcd.erase(kKey);
    }
    EXPECT_TRUE(eventually([&] { return etcd.requests(kWatch) > opened; }));
    etcd.holdEvents(false);
    EXPECT_TRUE(eventually([&] { return listener.revision() == etcd.revision(); }));
  }
}

TEST_F(SharedStoreTest, AfterACompactionOnlyDifferencesBecomeEvents) {
  etcd.put("/team/settings/editor/wrap", "{\"type\":\"boolean\",\"value\":true}");
  etcd.put("/team/settings/gone", intDocument(1));
  const NodePtr root = openShared(options());
  const Listener listener(root);
  etcd.close();
  etcd.put(kKey, intDocument(15));
  etcd.erase("/team/settings/gone");
  etcd.put(kKey, intDocument(16));
  etcd.compact();
  etcd.open();
  Names heard = listener.waitFor(2);
  std::sort(heard.begin(), heard.end());
  EXPECT_EQ(heard, (Names{"changed fontSize", "removed gone from settings"}));
  etcd.put(kKey, intDocument(17));
  EXPECT_EQ(listener.waitFor(3).back(), "changed fontSize");
  EXPECT_EQ(sizeOf(root), 17);
}

TEST_F(SharedStoreTest, EventsThatAreRepeatedAreHeardOnce) {
  const NodePtr root = openShared(options());
  const Listener listener(root);
  etcd.put(kKey, intDocument(15));
  listener.waitFor(1);
  etcd.repeatEvents();
  etcd.put("/team/settings/other", intDocument(1));
  const Names once{"changed fontSize", "added other to settings", "changed other"};
  EXPECT_EQ(listener.waitFor(3), once);
  // An event that was heard twice would have come before this one.
  etcd.put(kKey, intDocument(16));
  EXPECT_EQ(listener.waitFor(4), (Names{"changed fontSize", "added other to settings",
                                        "changed other", "changed fontSize"}));
}

TEST_F(SharedStoreTest, AnExpiredTokenIsRenewedAndNoEventIsLost) {
  const SharedStoreOptions chosen = optionsWithPassword();
  etcd.demandTokens();
  const NodePtr root = openShared(chosen);
  const Listener listener(root);
  const int given = etcd.tokensGiven();
  etcd.demandTokens();
  editorOf(root)->setAny("fontSize", 15, "workgroup");
  EXPECT_GT(etcd.tokensGiven(), given + 1);
  etcd.demandTokens();
  editorOf(root)->setAny("fontSize", 17, "workgroup");
  etcd.close();
  etcd.put(kKey, intDocument(16));
  etcd.open();
  EXPECT_EQ(listener.waitFor(3),
            (Names{"changed fontSize", "changed fontSize", "changed fontSize"}));
  EXPECT_EQ(sizeOf(root), 16);
}

}  // namespace
}  // namespace test
