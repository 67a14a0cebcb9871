// The copy of a shared level for the time without the network.
#include "tests/cluster/shared_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

TEST_F(SharedStoreTest, ACopyThatIsOfNoUseAndAForeignKeyDoNoHarm) {
  { const NodePtr root = openShared(options()); }
  const std::string file = directory.file(copyName());
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  etcd.setKnob([](const std::string& path, FakeEtcd::Answer& answer) {
    if (path != kRange) return;
    nlohmann::json changed = nlohmann::json::parse(answer.body);
    changed["kvs"].push_back({{"key", "Lw=="}, {"value", ""}});  // "/"
    answer.body = changed.dump();
  });
  NodePtr root;
  reportOfOpening(root, options());
  EXPECT_EQ(sizeOf(root), 14);
  etcd.close();
  reportOfOpening(root, optionsForStartAway());
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
  LocalCopy first(directory.file("new/user"), parseClusterAddress("http://a/team/x"));
  first.replace({"7", 1}, {});
  EXPECT_TRUE(first.read());
  const std::string name = write("http://a,http://b/team/x");
  EXPECT_EQ(write("http://b,http://a/team/x"), name);
  EXPECT_NE(write("http://a,http://b/team-x"), name);
  EXPECT_NE(write("http://a,http://c/team/x"), name);
}

TEST_F(SharedStoreTest, TheCopyIsWholeWhenTheNetworkIsGone) {
  NodePtr root = openShared(options());
  const Listener listener(root);
  etcd.put(kKey, intDocument(15));
  listener.waitFor(1);
  etcd.close();
  EXPECT_TRUE(eventually([&] {
    std::string reason;
    const auto copied =
        parseCopy(directory.read(copyName()), parseClusterAddress(options().address), reason);
    return copied && copied->items.at(0).value == intDocument(15);
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
    const std::string report = reportOfOpening(root, optionsForStartAway());
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

}  // namespace
}  // namespace test
