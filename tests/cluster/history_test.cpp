// Processes that change settings on a cluster whose members are killed, paused, stopped and started
// at random. Their history is compared with that of etcd itself, as etcdctl shows it.
//
//   history_test [seconds]
//
// Each process sets a key of its own, and commits two keys together that all share; every value is
// written once. It fails unless
//   - each acknowledged change is in etcd's history, and no change is there twice
//   - the two keys of a commit have the same revision, and no process sees them apart
//   - each process has seen the values of each key in the order of etcd, and at the end has the
//   last
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>

#include "host/shared_store/base64.h"
#include "tests/cluster/cluster.h"

namespace test {
namespace {

using namespace zlutil::settings::host;
using Clock = std::chrono::steady_clock;

constexpr int kProcesses = 3;
constexpr int kRange = 1000000;  // of the values of one process
const char* const kNames[] = {"own0", "own1", "own2", "a", "b"};

// What one process notes in its file: "acked KEY VALUE", "unsure KEY VALUE", "seen KEY VALUE",
// "apart A B", "last KEY VALUE".
class Process {
 public:
  Process(const Cluster& cluster, int number)
      : number_(number),
        notes_(cluster.file("notes" + std::to_string(number))),
        root_(openShared(cluster.options())),
        listener_(root_->addListener<zlutil::settings::SettingsValueChangeEvent>(
            [this](const auto& event) { see(event.getObj()->getName()); })) {}

  void run() {
    std::thread reader([this] { read(); });
    const std::string own = kNames[number_];
    for (int turn = 1; valueOf("end") < 1; ++turn) {
      const int value = number_ * kRange + turn;
      if (turn % 2 == 0) {
        attempt(own, value, [&] { root_->setAny(own, value, "workgroup"); });
        continue;
      }
      attempt("a", value, [&] {
        const SettingsProblems problems = setAll(
            root_, {{root_->getChild("a"), value}, {root_->getChild("b"), value}}, "workgroup");
        if (!problems.empty()) throw std::runtime_error(problems.front().second);
      });
    }
    eventually([this] { return valueOf("end") == 2; });
    isEnding_ = true;
    reader.join();
    for (const char* const name : kNames) note("last", name, valueOf(name));
  }

 private:
  int valueOf(const std::string& key) const { return intAt(root_, key, "workgroup"); }

  void note(const char* what, const std::string& key, int value) {
    const std::lock_guard<std::mutex> lock(mutex_);
    notes_ << what << ' ' << key << ' ' << value << std::endl;
  }

  template <class Action>
  void attempt(const std::string& key, int value, const Action& action) {
    try {
      action();
      note("acked", key, value);
    } catch (const std::exception& failure) {
      note("unsure", key, value);
      std::fprintf(stderr, "%s\n", failure.what());
      usleep(20000);
    }
  }

  // Other threads may see a key, too; a value that another has noted later is not noted again.
  void see(const std::string& key) {
    const std::lock_guard<std::mutex> lock(seeing_);
    const int value = valueOf(key);
    if (std::exchange(seen_[key], value) != value) note("seen", key, value);
  }

  // Both keys of a commit must become visible in one step.
  void read() {
    while (!isEnding_) {
      const int before = valueOf("a"), b = valueOf("b");
      if (b != before && valueOf("a") == before && valueOf("b") == b) {
        note("apart", std::to_string(before), b);
      }
      usleep(50);
    }
  }

  const int number_;
  std::mutex mutex_, seeing_;
  std::ofstream notes_;
  std::map<std::string, int> seen_;
  std::atomic<bool> isEnding_{false};
  const NodePtr root_;
  const zlutil::eventmgr::ScopedConnection listener_;
};

// The values of each key with their revisions, in order.
using History = std::map<std::string, std::vector<std::pair<std::int64_t, int>>>;

History historyOf(const Cluster& cluster) {
  const std::string prefix = std::string(Cluster::kPrefix) + '/';
  std::istringstream lines(
      cluster.run("ctl watch -w json --rev=1 --prefix " + prefix + "; true", 5));
  History history;
  for (std::string line; std::getline(lines, line);) {
    const auto answer = nlohmann::json::parse(line, nullptr, false);
    if (!answer.is_object() || !answer.contains("Events")) continue;
    for (const auto& event : answer["Events"]) {
      const auto& kv = event["kv"];
      const std::string key =
          bytesFromBase64(kv["key"].get<std::string>()).value().substr(prefix.size());
      const auto document =
          nlohmann::json::parse(bytesFromBase64(kv["value"].get<std::string>()).value());
      if (document["value"] < 0) continue;  // of before the processes
      history[key].emplace_back(kv["mod_revision"].get<std::int64_t>(),
                                document["value"].get<int>());
    }
  }
  return history;
}

class Check {
 public:
  explicit Check(const History& history) : history_(history) {
    for (const auto& [key, values] : history) {
      for (std::size_t at = 0; at < values.size(); ++at) {
        if (!places_[key].emplace(values[at].second, at).second)
          fail("is there twice", key, values[at].second);
      }
    }
    if (history_.at("a") != history_.at("b")) fail("half a commit", "a", 0);
  }

  void process(std::istream& notes) {
    std::map<std::string, std::size_t> lastSeen;
    std::string what, key;
    for (int value; notes >> what >> key >> value;) {
      if (what == "apart") fail("two keys of a commit are apart", key, value);
      if (what == "unsure") ++unsure_;
      if (what != "acked" && what != "seen" && what != "last") continue;
      const auto place = places_[key].find(value);
      if (place == places_[key].end()) {
        fail(what == "acked" ? "is acknowledged and lost" : "was seen and is not there", key,
             value);
        continue;
      }
      if (what == "acked") ++acked_;
      if (what == "seen") {
        if (place->second < lastSeen[key]) fail("was seen too late", key, value);
        lastSeen[key] = place->second;
        ++seen_;
      }
      if (what == "last" && (value != history_.at(key).back().second ||
                             lastSeen[key] != history_.at(key).size() - 1)) {
        fail("is the last value, and etcd's or the last event's is another", key, value);
      }
      lasts_ += what == "last";
    }
  }

  bool report() {
    if (lasts_ != kProcesses * std::size(kNames)) fail("a process has not come to its end", "", 0);
    std::printf("%d acknowledged changes, %d that failed, %d values seen: %d problems\n", acked_,
                unsure_, seen_, problems_);
    return problems_ == 0 && acked_ > 0;
  }

 private:
  void fail(const char* what, const std::string& key, int value) {
    if (++problems_ <= 20) std::printf("%s %d %s\n", key.c_str(), value, what);
  }

  const History& history_;
  std::map<std::string, std::map<int, std::size_t>> places_;
  int acked_ = 0, unsure_ = 0, seen_ = 0, problems_ = 0;
  std::size_t lasts_ = 0;
};

void disturb(const Cluster& cluster, std::mt19937& random, int turn) {
  const auto sleepFor = [&](unsigned milliseconds) { usleep(1000 * (random() % milliseconds)); };
  cluster.ctl("get /");  // there is a leader
  const std::string leader = cluster.run("leader");
  std::string member = turn % 2 == 0 ? leader.substr(0, 1) : std::to_string(1 + random() % 3);
  switch (turn % 5) {
    case 0:
    case 1:
      cluster.run("kill " + member);
      sleepFor(3000);
      cluster.run("start " + member);
      break;
    case 2:
    case 3:
      cluster.run("pause " + member);
      sleepFor(5000);
      cluster.run("resume " + member);
      break;
    default:
      cluster.run("stop");
      sleepFor(1500);
      cluster.run("start");
  }
  sleepFor(2000);
  cluster.run("start");  // waits until the cluster answers
}

int run(int seconds) {
  const Cluster cluster(3);
  for (const char* const name : kNames) cluster.putInt(name, -1);
  cluster.putInt("end", 0);
  for (int number = 0; number < kProcesses; ++number) {
    if (fork() != 0) continue;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::string log = cluster.file("errors" + std::to_string(number));
    if (!std::freopen(log.c_str(), "w", stderr)) _exit(1);
    Process(cluster, number).run();
    _exit(0);
  }
  const unsigned seed = std::random_device{}();
  std::printf("seed %u\n", seed);
  std::fflush(stdout);
  std::mt19937 random(seed);
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  for (int turn = 0; Clock::now() < end; ++turn) disturb(cluster, random, turn);
  cluster.putInt("end", 1);
  sleep(12);  // longer than a change may take
  cluster.putInt("end", 2);
  for (int number = 0; number < kProcesses; ++number) wait(nullptr);
  const History history = historyOf(cluster);
  Check check(history);
  for (int number = 0; number < kProcesses; ++number) {
    std::ifstream notes(cluster.file("notes" + std::to_string(number)));
    check.process(notes);
  }
  return check.report() ? 0 : 1;
}

}  // namespace
}  // namespace test

int main(int argc, char** argv) {
  try {
    return test::run(argc > 1 ? std::atoi(argv[1]) : 40);
  } catch (const std::exception& failure) {  // the cluster has been stopped
    std::printf("%s\n", failure.what());
    return 1;
  }
}
