// The workgroup level on a cluster of three members on this machine, beside bare requests to the
// same cluster in the same run. Prints a table.
//
//   shared_bench CLUSTER_DIR CLUSTER_SCRIPT     the cluster runs, and has no settings
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>
#include <thread>

#include "bench/shared_cluster.h"
#include "host/shared_store/base64.h"

namespace {

thread_local long allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace zlutil::settings::host;
using test::SettingsPtr;
using Clock = std::chrono::steady_clock;

constexpr char kPrefix[] = "/team/settings/";
constexpr ClusterClient::Patience kPatience{std::chrono::seconds(60), std::chrono::seconds(60)};

double since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double at(std::vector<double>& times, double part) {
  std::sort(times.begin(), times.end());
  return times[static_cast<std::size_t>(part * static_cast<double>(times.size() - 1))];
}

void print(const char* what, std::vector<double> ours, std::vector<double> bare) {
  const double our = at(ours, 0.5), floor = at(bare, 0.5);
  std::printf("| %s | %.2f / %.2f ms | %.2f / %.2f ms | %.2f |\n", what, our, at(ours, 0.99), floor,
              at(bare, 0.99), our / floor);
  std::fflush(stdout);
}

std::string intDocument(int value) {
  return "{\"type\":\"int\",\"value\":" + std::to_string(value) +
         ",\"by\":\"admin\",\"at\":\"2026-03-01T12:00:00Z\",\"on\":\"pc17\",\"commit\":\"0123456789"
         "abcdef\"}";
}

std::string readLine(const std::string& file) {
  std::string line;
  std::ifstream stream(file);
  std::getline(stream, line);
  return line;
}

void waitUntil(const std::atomic<int>& number, int value) {
  while (number != value) {
  }
}

// A put by one client until another one's stream shows it.
class BareWatch {
 public:
  explicit BareWatch(const ClusterOptions& options) : watching_(options) {
    watching_.openWatch(
        watchRequest(kPrefix, rangeEndOf(kPrefix), 0),
        [this](std::string_view bytes) {
          lines_ += static_cast<int>(std::count(bytes.begin(), bytes.end(), '\n'));
          return true;
        },
        kPatience);
    thread_ = std::thread([this] {
      while (!watching_.connection().isStopped()) {
        watching_.connection().wait(Clock::now() + std::chrono::seconds(1));
      }
    });
    waitUntil(lines_, 1);
  }
  ~BareWatch() {
    watching_.connection().stop();
    thread_.join();
  }

  const std::atomic<int>& lines() const { return lines_; }

 private:
  ClusterClient watching_;
  std::atomic<int> lines_{0};
  std::thread thread_;
};

std::string putRequest(const std::string& key, const std::string& value) {
  return "{\"key\":\"" + base64From(kPrefix + key) + "\",\"value\":\"" + base64From(value) + "\"}";
}

void measureHearing(const SharedStoreOptions& options, const ClusterOptions& cluster) {
  ClusterClient client(cluster);
  client.ask("/v3/kv/put", putRequest("k", intDocument(0)), kPatience);
  const NodePtr writer = test::openShared(options), reader = test::openShared(options);
  std::atomic<int> heard{0};
  const zlutil::eventmgr::ScopedConnection listener(
      reader->addListener<zlutil::settings::SettingsValueChangeEvent>(
          [&](const auto&) { heard = test::intAt(reader, "k"); }));
  std::vector<double> ours, bare;
  for (int round = 1; round <= 500; ++round) {
    {
      const auto start = Clock::now();
      writer->setAny("k", round, "workgroup");
      waitUntil(heard, round);
      ours.push_back(since(start));
    }
  }
  const BareWatch watch(cluster);
  for (int round = 1; round <= 500; ++round) {
    const int lines = watch.lines();
    const auto start = Clock::now();
    client.ask("/v3/kv/put", putRequest("k", intDocument(round)), kPatience);
    waitUntil(watch.lines(), lines + 1);
    bare.push_back(since(start));
  }
  print("set until heard in another tree", ours, bare);
}

void measureCommit(const SharedStoreOptions& options, const ClusterOptions& cluster) {
  ClusterClient client(cluster);
  const NodePtr root = test::openShared(options);
  std::vector<SettingsPtr> keys;
  for (int i = 0; i < 1000; ++i) keys.push_back(test::addKey(root, "c" + std::to_string(i)));
  std::vector<double> ours, bare;
  for (int round = 0; round < 20; ++round) {
    test::SettingsValues values;
    for (const SettingsPtr& key : keys) values.emplace_back(key, round);
    auto start = Clock::now();
    if (!test::setAll(root, values, "workgroup").empty()) std::abort();
    ours.push_back(since(start));
    TxnRequest request;
    for (int i = 0; i < 1000; ++i) {
      const std::string key = kPrefix + ("d" + std::to_string(i));
      request.require(key, {}, 1000000000);
      request.put(key, intDocument(round));
    }
    const std::string text = request.text({kPrefix + std::string("none"), {}});
    start = Clock::now();
    client.ask("/v3/kv/txn", text, kPatience);
    bare.push_back(since(start));
  }
  print("commit of 1,000", ours, bare);
}

void measureLoading(const SharedStoreOptions& options, const ClusterOptions& cluster, int count) {
  ClusterClient client(cluster);
  for (int first = 0; first < count; first += 5000) {
    TxnRequest request;
    for (int i = first; i < first + 5000; ++i) {
      request.put(kPrefix + ("n" + std::to_string(i % 100) + "/k" + std::to_string(i)),
                  intDocument(i));
    }
    client.ask("/v3/kv/txn", request.text({kPrefix + std::string("none"), {}}), kPatience);
  }
  std::vector<double> ours, bare;
  for (int round = 0; round < 5; ++round) {
    // Both connect and log in, as a process that starts does.
    auto start = Clock::now();
    ClusterClient(cluster).ask("/v3/kv/range", requestOf({kPrefix, rangeEndOf(kPrefix)}),
                               kPatience);
    bare.push_back(since(start));
    start = Clock::now();
    const NodePtr root = test::openShared(options);
    ours.push_back(since(start));
    if (test::intAt(root->getChild("n1"), "k1") != 1) std::abort();
  }
  print(count == 10000 ? "loading 10,000 settings" : "loading 100,000 settings", ours, bare);
}

// A thread that changes the level all the time.
class Writer {
 public:
  explicit Writer(const ClusterOptions& cluster)
      : thread_([this, cluster] {
          ClusterClient client(cluster);
          for (int value = 0; !isEnding_; ++value) {
            client.ask("/v3/kv/put", putRequest("busy", intDocument(value)), kPatience);
          }
        }) {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  }
  ~Writer() {
    isEnding_ = true;
    thread_.join();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }

 private:
  std::atomic<bool> isEnding_{false};
  std::thread thread_;
};

// Reads of a shared tree, and of one in memory while the process has no shared tree, each while a
// cluster is quiet and while others change the level. The members, the writer and the reader share
// the processors, so that a tree which knows nothing of the cluster becomes slower too.
template <class Read>
void measureReadingWhileBusy(const SharedStoreOptions& options, const ClusterOptions& cluster,
                             const NodePtr& plain, const Read& read) {
  constexpr int kRounds = 10, kTimes = 10;
  struct Times {
    std::vector<double> quiet, busy;
  };
  const auto measure = [&](const NodePtr& root, Times& times) {
    for (int i = 0; i < kTimes; ++i) times.quiet.push_back(read(root));
    const Writer writer(cluster);
    for (int i = 0; i < kTimes; ++i) times.busy.push_back(read(root));
  };
  Times ours, bare;
  for (int round = 0; round < kRounds; ++round) {
    measure(plain, bare);
    measure(test::openShared(options), ours);
  }
  print("10,000 reads on a busy cluster, beside a tree in memory", ours.busy, bare.busy);
  print("10,000 reads on a busy cluster, beside a quiet one", ours.busy, ours.quiet);
  print("10,000 reads of the tree in memory, likewise", bare.busy, bare.quiet);
}

void measureReading(const SharedStoreOptions& options, const ClusterOptions& cluster) {
  constexpr int kReads = 10000;
  NodePtr shared = test::openShared(options);
  const auto plain = boost::make_shared<Node>(Tree::makeStandalone(), "s", true, ValidatorPtr());
  test::addKey(plain, "k");
  plain->setAny("k", 1, "user");
  const auto read = [](const SettingsPtr& root) {
    const auto start = Clock::now();
    for (int i = 0; i < kReads; ++i) root->getValue("k", "");
    return since(start);
  };
  const auto allocationsOf = [](const SettingsPtr& root) {
    const long before = allocations;
    for (int i = 0; i < kReads; ++i) root->getValue("k", "");
    return static_cast<double>(allocations - before) / kReads;
  };
  std::vector<double> ours, bare;
  for (int round = 0; round < 50; ++round) {
    ours.push_back(read(shared));
    bare.push_back(read(plain));
  }
  print("10,000 reads, beside a tree in memory", ours, bare);
  std::printf("| allocations of a read | %.2f | %.2f | |\n", allocationsOf(shared),
              allocationsOf(plain));
  shared.reset();
  measureReadingWhileBusy(options, cluster, plain, read);
}

void measureElection(const SharedStoreOptions& options, const std::string& directory,
                     const std::string& script) {
  const NodePtr root = test::openShared(options);
  const std::string run = "CLUSTER_DIR=" + directory + ' ' + script + ' ';
  std::vector<double> times;
  for (int round = 0; round < 5; ++round) {
    if (std::system((run + "leader >" + directory + "/leader").c_str()) != 0) std::abort();
    const std::string leader = readLine(directory + "/leader");
    if (std::system((run + "kill " + leader).c_str()) != 0) std::abort();
    const auto start = Clock::now();
    root->setAny("k", 1000 + round, "workgroup");
    times.push_back(since(start));
    if (std::system((run + "start " + leader + " && " + run + "start >/dev/null").c_str()) != 0) {
      std::abort();
    }
  }
  std::printf("| set after the leader was killed | %.0f ms, longest %.0f ms | | |\n",
              at(times, 0.5), at(times, 1.0));
}

}  // namespace

int main(int, char** argv) {
  const SharedStoreOptions options = bench::optionsOf(argv[1]);
  const ClusterOptions cluster{parseClusterAddress(options.address),
                               readCredentials(options.credentials),
                               {options.authority, "", ""}};
  std::printf("| | ours, median / 99%% | bare, median / 99%% | ratio |\n|---|---|---|---|\n");
  measureHearing(options, cluster);
  measureReading(options, cluster);
  measureCommit(options, cluster);
  measureElection(options, argv[1], argv[2]);
  measureLoading(options, cluster, 10000);
  measureLoading(options, cluster, 100000);
}
