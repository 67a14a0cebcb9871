// A tree with a shared store behind its workgroup level, on a server that fails as told.
#include "host/shared_store/shared_store.h"

#include <filesystem>

#include "host/change/external_changes.h"
#include "tests/cluster/fake_etcd.h"
#include "tests/cluster/shared_tree.h"
#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

constexpr char kKey[] = "/team/settings/editor/fontSize";
constexpr char kTxn[] = "/v3/kv/txn";

std::string intDocument(int value) {
  return "{\"type\":\"int\",\"value\":" + std::to_string(value) + "}";
}

class SharedStoreTest : public testing::Test {
 protected:
  SharedStoreTest() { etcd.put(kKey, intDocument(14)); }

  SharedStoreOptions options() {
    SharedStoreOptions options = optionsFor(etcd.url() + ',' + etcd.otherUrl() + "/team/settings");
    options.directory = directory.path();
    return options;
  }
  SharedStoreOptions optionsWithPassword() {
    SharedStoreOptions made = options();
    made.credentials = directory.write("password", "anna\nsecret\n");
    chmod(made.credentials.c_str(), 0600);
    return made;
  }
  static SettingsPtr editorOf(const NodePtr& root) { return root->getChild("editor"); }
  static int sizeOf(const NodePtr& root) {
    const SettingsPtr editor = editorOf(root);
    return editor && editor->getChild("fontSize") ? intAt(editor, "fontSize", "workgroup") : -1;
  }
  // Returns the name of the file of the only copy.
  std::string copyName() const {
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
      if (entry.path().extension() == ".copy") return entry.path().filename();
    }
    return "";
  }
  // Opens a tree, and returns what is reported meanwhile.
  std::string reportOfOpening(NodePtr& root, const SharedStoreOptions& chosen) {
    testing::internal::CaptureStderr();
    root = openShared(chosen);
    return testing::internal::GetCapturedStderr();
  }

  const TemporaryDirectory directory;
  FakeEtcd etcd;
};

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
  node->setAny("k", 1, "workgroup");
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

TEST_F(SharedStoreTest, AnAnswerThatIsCutAtAnyByteIsAskedForAgain) {
  std::size_t length = 0, cut = 0;
  etcd.setKnob([&](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != "/v3/kv/range" || cut == std::string::npos) return;
    length = answer.body.size();
    answer.sent = cut;
    cut = std::string::npos;
  });
  const SharedStoreOptions chosen = options();
  for (std::size_t at = 0; at == 0 || at < length + 40; ++at) {
    cut = at;
    ClusterWatch watch({parseClusterAddress(chosen.address), {}, {}});
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
    SharedStoreOptions chosen = options();
    chosen.longestStart = std::chrono::milliseconds(1000);
    chosen.directory = "";
    NodePtr root;
    const std::string report = reportOfOpening(root, chosen);
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 1) << report;
    EXPECT_NE(report.find("this level is empty"), std::string::npos) << report;
    etcd.setKnob({});
    EXPECT_TRUE(eventually([&] { return sizeOf(root) == 14; })) << wrong.body.substr(0, 60);
  }
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

// A listener that fails at the first events.
class FailingListener : public ClusterListener {
 public:
  void onContent(const AnswerHeader&, std::vector<KeyValue> items) override {
    content = items.at(0).value;
    ++loads;
  }
  void onEvents(const AnswerHeader&, std::vector<WatchEvent> events) override {
    if (!events.empty()) throw std::runtime_error("no memory");
  }
  void onAway(const std::string&) override {}
  void onAnswers() override {}
  bool onIdle() override { return false; }

  std::string content;
  std::atomic<int> loads{0};
};

TEST_F(SharedStoreTest, EventsOfAListenerThatFailsAreReadAgain) {
  FailingListener listener;
  ClusterWatch watch({parseClusterAddress(options().address), {}, {}});
  ASSERT_TRUE(watch.start(listener));
  ASSERT_TRUE(eventually([&] { return listener.loads == 1 && etcd.watchesOpened() == 1; }));
  etcd.put(kKey, intDocument(15));
  ASSERT_TRUE(eventually([&] { return listener.loads == 2; }));
  EXPECT_EQ(listener.content, intDocument(15));
}

TEST_F(SharedStoreTest, ACopyThatIsOfNoUseAndAForeignKeyDoNoHarm) {
  { const NodePtr root = openShared(options()); }
  const std::string file = directory.file(copyName());
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  etcd.setKnob([](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != "/v3/kv/range") return;
    nlohmann::json changed = nlohmann::json::parse(answer.body);
    changed["kvs"].push_back({{"key", "Lw=="}, {"value", ""}});  // "/"
    answer.body = changed.dump();
  });
  NodePtr root;
  reportOfOpening(root, options());
  EXPECT_EQ(sizeOf(root), 14);
  etcd.close();
  reportOfOpening(root, options());
  EXPECT_TRUE(root->getChildren().empty());
}

TEST_F(SharedStoreTest, EachClusterHasItsCopyWhoseTimeIsKeptCurrent) {
  const auto write = [&](const char* text) {
    LocalCopy copy(directory.path(), parseClusterAddress(text));
    copy.replace({"7", 1}, {});
    const std::filesystem::path file = directory.file(copyName());
    std::filesystem::last_write_time(
        file, std::filesystem::file_time_type::clock::now() - std::chrono::hours(10));
    EXPECT_EQ(copy.age(), "10 hours");
    copy.writeIfDue(std::chrono::steady_clock::now());
    EXPECT_NE(copy.age(), "10 hours");
    std::filesystem::remove(file);
    return file.filename().string();
  };
  const std::string name = write("http://a,http://b/team/x");
  EXPECT_EQ(write("http://b,http://a/team/x"), name);
  EXPECT_NE(write("http://a,http://b/team-x"), name);
  EXPECT_NE(write("http://a,http://c/team/x"), name);
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
  set();
  EXPECT_EQ(sizeOf(root), 1);
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
  listener.waitFor(2);
  EXPECT_EQ(listener.heard,
            (Names{"changed fontSize", "added other to settings", "changed other"}));
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
  etcd.close();
  etcd.put(kKey, intDocument(16));
  etcd.open();
  EXPECT_EQ(listener.waitFor(2), (Names{"changed fontSize", "changed fontSize"}));
  EXPECT_EQ(sizeOf(root), 16);
}

TEST_F(SharedStoreTest, WithoutTheNetworkTheCopyIsUsedAndWritesFailAtOnce) {
  { const NodePtr root = openShared(options()); }
  etcd.close();
  NodePtr root;
  const std::string report = reportOfOpening(root, options());
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
  EXPECT_TRUE(eventually([&] {
    try {
      editorOf(root)->setAny("fontSize", 41, "workgroup");
      return true;
    } catch (const Failure<StoreFailure>&) {
      return false;
    }
  }));
}

TEST_F(SharedStoreTest, TheCopyFollowsChangesAndATornOrForeignOneIsIgnored) {
  std::string file;
  {
    const NodePtr root = openShared(options());
    file = copyName();
    etcd.put("/team/settings/b", intDocument(2));
    etcd.put("/team/settings/a", intDocument(1));
    etcd.erase(kKey);
    const ClusterAddress address = parseClusterAddress(options().address);
    EXPECT_TRUE(eventually([&] {
      std::string reason;
      const auto copied = parseCopy(directory.read(file), address, reason);
      return copied && copied->items.size() == 2 && copied->items[0].key == "/team/settings/a" &&
             copied->items[1].value == intDocument(2) && copied->header.revision == etcd.revision();
    })) << directory.read(file);
  }
  etcd.close();
  const std::string whole = directory.read(file);
  const auto openWith = [&](const std::string& content) {
    directory.write(file, content);
    NodePtr root;
    const std::string report = reportOfOpening(root, options());
    EXPECT_TRUE(root->getChildren().empty());
    EXPECT_NE(report.find("is ignored"), std::string::npos) << report;
  };
  std::string reason;
  const ClusterAddress address = parseClusterAddress(options().address);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(parseCopy(whole.substr(0, size), address, reason)) << size;
  }
  openWith(whole.substr(0, whole.size() / 2));
  std::string other = whole;
  other.replace(other.find("/team/settings"), 14, "/team/another1");
  openWith(other);
  EXPECT_FALSE(parseCopy(whole, parseClusterAddress("http://x:1/team/settings"), reason));
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

}  // namespace
}  // namespace test
