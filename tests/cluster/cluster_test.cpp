// A tree with a shared store behind its workgroup level, on real clusters.
#include "tests/cluster/cluster.h"
#include "tests/cluster/noting_listener.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

// Returns the int of a key below the root; -1 if it has none.
int valueOf(const NodePtr& root, const std::string& key) {
  return root->getChild(key) ? intAt(root, key, "workgroup") : -1;
}

class ClusterTest : public testing::Test {
 protected:
  ClusterTest() : cluster(Cluster::instance()) {
    cluster.run("start");
    cluster.clear();
    cluster.putInt("k", 1);
  }

  Cluster& cluster;
  const TemporaryDirectory directory;
};

TEST_F(ClusterTest, AnAdministratorsChangeIsHeardAndAReaderIsRefusedWithTheReason) {
  const NodePtr admin = openShared(cluster.options());
  const NodePtr reader = openShared(cluster.options("reader"));
  const Listener listener(reader);
  admin->setAny("k", 2, "workgroup");
  EXPECT_EQ(listener.waitFor(1), Names{"changed k"});
  EXPECT_EQ(valueOf(reader, "k"), 2);
  const std::string message =
      messageOf<CantModifyValuesOnReadOnlyLevel>([&] { reader->setAny("k", 3, "workgroup"); });
  EXPECT_TRUE(has(message, "permission denied")) << message;
  EXPECT_EQ(valueOf(admin, "k"), 2);
}

TEST_F(ClusterTest, ACommitIsAppliedWholeOrRefusedWithTheLimitOfTheServer) {
  const NodePtr root = openShared(cluster.options()), other = openShared(cluster.options());
  constexpr int kMany = 11500;
  SettingsValues values;
  for (int i = 0; i < kMany; ++i) {
    values.emplace_back(addKey(root, "k" + std::to_string(i)), i);
    if (i + 1 != 1000) continue;
    EXPECT_EQ(setAll(root, values, "workgroup"), SettingsProblems());
    EXPECT_TRUE(eventually([&] { return valueOf(other, "k999") == 999; }));
    EXPECT_EQ(valueOf(other, "k0"), 0);
  }
  const SettingsProblems problems = setAll(root, values, "workgroup");
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_TRUE(has(problems.front().second, "--max-txn-ops")) << problems.front().second;
  EXPECT_TRUE(has(problems.front().second, "10500")) << problems.front().second;
  addKey(root, "text");
  const std::string message = messageOf<StoreFailure>(
      [&] { root->setAny("text", std::string(2 << 20, 'x'), "workgroup"); });
  EXPECT_TRUE(has(message, "--max-request-bytes")) << message;
  EXPECT_FALSE(root->isSet("text", ""));
}

TEST_F(ClusterTest, AWrongAuthorityOrPasswordIsReportedInOneLine) {
  SharedStoreOptions foreign = cluster.options(), stranger = cluster.options();
  foreign.authority = "/etc/ssl/certs/ca-certificates.crt";
  stranger.credentials = directory.write("password", "admin\nwrong\n");
  chmod(stranger.credentials.c_str(), 0600);
  const std::pair<SharedStoreOptions, const char*> cases[] = {{foreign, "certificate"},
                                                              {stranger, "authentication failed"}};
  for (const auto& [options, reason] : cases) {
    testing::internal::CaptureStderr();
    {
      const NodePtr root = openShared(options);
      EXPECT_TRUE(root->getChildren().empty());
      messageOf<StoreFailure>([&] {
        addKey(root, "own");
        root->setAny("own", 1, "workgroup");
      });
    }
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 1) << report;
    EXPECT_TRUE(has(report, reason)) << report;
  }
}

TEST_F(ClusterTest, AuthenticationCanBeSwitchedOffAndOn) {
  const NodePtr root = openShared(cluster.options());
  cluster.ctl("auth disable");
  EXPECT_TRUE(canSet(root, "k", 5));
  EXPECT_EQ(valueOf(openShared(cluster.options()), "k"), 5);
  cluster.ctl("auth enable");
  EXPECT_TRUE(canSet(root, "k", 6));
  cluster.putInt("k", 7);
  EXPECT_TRUE(eventually([&] { return valueOf(root, "k") == 7; }));
}

TEST_F(ClusterTest, AfterACompactionMeanwhileEverythingIsReadAnew) {
  const NodePtr root = openShared(cluster.options("admin", 1));
  const Listener listener(root);
  cluster.run("kill 1");
  for (int value = 2; value < 6; ++value) cluster.putInt("k", value);
  const std::string found = cluster.ctl("get -w json " + std::string(Cluster::kPrefix) + "/k");
  const std::string revision = found.substr(found.find("\"revision\":") + 11);
  cluster.ctl("compact " + std::to_string(std::stoll(revision)));
  cluster.run("start 1");
  EXPECT_EQ(listener.waitFor(1), Names{"changed k"});
  EXPECT_TRUE(eventually([&] { return valueOf(root, "k") == 5; }));
}

TEST_F(ClusterTest, AMemberThatHasLostItsDataIsFollowedAgain) {
  const NodePtr root = openShared(cluster.options("admin", 3));
  cluster.run("kill 3");
  cluster.run("wipe 3");
  cluster.putInt("k", 8);
  cluster.run("start 3");
  EXPECT_TRUE(eventually([&] { return valueOf(root, "k") == 8; }));
  EXPECT_TRUE(canSet(root, "k", 9));
}

TEST_F(ClusterTest, APausedMemberIsNoticedAndLeft) {
  const NodePtr root = openShared(cluster.options());
  const int leader = std::stoi(cluster.run("leader"));
  for (const int member : {1, leader}) {
    cluster.run("pause " + std::to_string(member));
    EXPECT_TRUE(canSet(root, "k", 10 + member));
    cluster.run("resume " + std::to_string(member));
    cluster.putInt("k", 20 + member);
    EXPECT_TRUE(eventually([&] { return valueOf(root, "k") == 20 + member; }));
  }
}

TEST(SmallCluster, ATokenThatLivesForASecondIsRenewedAndEveryChangeIsHeard) {
  const Cluster cluster(1, "--auth-token-ttl 1");
  cluster.putInt("k", 0);
  const NodePtr root = openShared(cluster.options());
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  for (int value = 1; std::chrono::steady_clock::now() < end; ++value) {
    cluster.putInt("k", value);
    EXPECT_TRUE(eventually([&] { return valueOf(root, "k") == value; }));
    root->setAny("k", -value, "workgroup");
    std::this_thread::sleep_for(std::chrono::milliseconds(value % 3 == 0 ? 1300 : 100));
  }
}

TEST(SmallCluster, ARestoredClusterIsReadAnewByRunningProcesses) {
  const Cluster cluster(1);
  cluster.putInt("k", 1);
  cluster.ctl("snapshot save " + cluster.file("saved"));
  const NodePtr root = openShared(cluster.options());
  cluster.putInt("later", 2);
  cluster.putInt("k", 3);
  ASSERT_TRUE(eventually([&] { return valueOf(root, "k") == 3; }));
  cluster.run("restore " + cluster.file("saved"));
  EXPECT_TRUE(eventually([&] { return valueOf(root, "k") == 1; }));
  EXPECT_FALSE(root->getChild("later"));
  EXPECT_TRUE(canSet(root, "k", 4));
  cluster.putInt("k", 5);
  EXPECT_TRUE(eventually([&] { return valueOf(root, "k") == 5; }));
}

TEST(SmallCluster, AQuietLevelOfABusyClusterIsNotReadAnewAfterACompaction) {
  const Cluster cluster(1);
  cluster.putInt("k", 1);
  const SharedStoreOptions shared = cluster.options();
  ClusterOptions options{parseClusterAddress(shared.address),
                         readCredentials(shared.credentials),
                         {shared.authority, "", ""}};
  options.quietTime = std::chrono::milliseconds(0);
  NotingListener listener;
  ClusterWatch watch(options);
  ASSERT_TRUE(watch.start(listener));
  ASSERT_TRUE(eventually([&] { return listener.loads() == 1; }));
  const std::int64_t revision = listener.revision() + 3;
  for (int i = 0; i < 3; ++i) cluster.ctl("put /another/team x");
  EXPECT_TRUE(eventually([&] { return listener.revision() == revision; }));
  cluster.ctl("compact " + std::to_string(revision));
  cluster.run("kill 1");
  cluster.run("start");
  cluster.putInt("k", 2);
  EXPECT_TRUE(eventually([&] { return listener.revision() > revision; }));
  EXPECT_EQ(listener.loads(), 1);
}

TEST(SmallCluster, AFullDatabaseRefusesTheChangeWithTheReason) {
  const Cluster cluster(1, "--quota-backend-bytes 4194304");
  cluster.putInt("k", 1);
  cluster.put("text", "{\"type\":\"string\",\"value\":\"\"}");
  const NodePtr root = openShared(cluster.options());
  std::string message;
  for (int round = 0; round < 40 && message.empty(); ++round) {
    try {
      root->setAny("text", std::string(500000, static_cast<char>('a' + round % 26)), "workgroup");
    } catch (const Failure<StoreFailure>& failure) {
      message = failure.what();
    }
  }
  EXPECT_TRUE(has(message, "database space exceeded")) << message;
  EXPECT_TRUE(has(message, "The change was not made")) << message;
  EXPECT_EQ(valueOf(root, "k"), 1);
}

}  // namespace
}  // namespace test
