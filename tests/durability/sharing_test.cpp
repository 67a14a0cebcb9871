// Processes that share one store. Each has threads that set keys of their own, each key once, and a
// listener. At the end every process must have received every change of the others exactly once,
// and have every value.
//
//   sharing_test [seconds]     prints the exact counts; fails if they differ
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using namespace zlutil::settings::host;
using Clock = std::chrono::steady_clock;

constexpr int kProcesses = 4;
constexpr int kThreads = 2;
constexpr int kWriters = kProcesses * kThreads;
constexpr auto kLongestDelay = std::chrono::seconds(30);

std::string nodeName(int writer) { return "w" + std::to_string(writer); }

struct Result {
  int made = 0;      // changes by this process: keys added and set
  int heardOwn = 0;  // events about them
  int heard = 0;     // events about keys of other processes
};

class Process {
 public:
  Process(const std::string& directory, int number) : number_(number) {
    root_ = openTree(storeIn(directory, 20000));
    listener_ = std::make_unique<zlutil::eventmgr::ScopedConnection>(
        root_->addListener<zlutil::settings::SettingsValueChangeEvent>([this](const auto& event) {
          const std::string writer = event.getObj()->getParent()->getName();
          const bool isOwn = std::atoi(writer.c_str() + 1) / kThreads == number_;
          ++(isOwn ? heardOwn_ : heardOthers_);
        }));
  }

  void write(std::chrono::seconds time) {
    const auto end = Clock::now() + time;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([this, end, thread] {
        const SettingsPtr node = root_->getChild(nodeName(number_ * kThreads + thread));
        for (int key = 0; Clock::now() < end; ++key) {
          const std::string name = "k" + std::to_string(key);
          addKey(node, name);
          node->setAny(name, key, "user");
          ++made_;
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }

  // Waits for `expected` events about changes of others, at most kLongestDelay.
  Result listen(int expected) {
    const auto end = Clock::now() + kLongestDelay;
    while (heardOthers_ < expected && Clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    // A second event of a change would arrive now.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return {made_, heardOwn_, heardOthers_};
  }

  int made() const { return made_; }
  std::string contents() const { return contentsOf(root_); }

 private:
  const int number_;
  NodePtr root_;
  std::unique_ptr<zlutil::eventmgr::ScopedConnection> listener_;
  std::atomic<int> made_{0}, heardOwn_{0}, heardOthers_{0};
};

struct Link {
  int toParent[2], toChild[2];
};

template <class Type>
void send(int pipe, const Type& value) {
  if (::write(pipe, &value, sizeof value) != sizeof value) std::abort();
}
template <class Type>
Type receive(int pipe) {
  Type value;
  if (::read(pipe, &value, sizeof value) != sizeof value) std::abort();
  return value;
}

void runChild(const std::string& directory, int number, const Link& link, int seconds) {
  Process process(directory, number);
  send(link.toParent[1], 0);
  receive<int>(link.toChild[0]);
  process.write(std::chrono::seconds(seconds));
  send(link.toParent[1], process.made());
  const int expected = receive<int>(link.toChild[0]);
  send(link.toParent[1], process.listen(expected));
  send(link.toParent[1], std::hash<std::string>()(process.contents()));
}

int run(int seconds) {
  const TemporaryDirectory directory;
  {
    const NodePtr root = openTree(storeIn(directory.path()));
    for (int writer = 0; writer < kWriters; ++writer) addNode(root, nodeName(writer));
  }
  Link links[kProcesses];
  for (int number = 0; number < kProcesses; ++number) {
    Link& link = links[number];
    if (pipe(link.toParent) != 0 || pipe(link.toChild) != 0) return 1;
    if (fork() == 0) {
      runChild(directory.path(), number, link, seconds);
      _exit(0);
    }
  }
  for (const Link& link : links) receive<int>(link.toParent[0]);
  for (const Link& link : links) send(link.toChild[1], 0);
  int made[kProcesses], all = 0;
  for (int number = 0; number < kProcesses; ++number) {
    all += made[number] = receive<int>(links[number].toParent[0]);
  }
  for (int number = 0; number < kProcesses; ++number) {
    send(links[number].toChild[1], all - made[number]);
  }
  bool right = all > 0;
  std::vector<std::size_t> contents;
  for (int number = 0; number < kProcesses; ++number) {
    const Result result = receive<Result>(links[number].toParent[0]);
    contents.push_back(receive<std::size_t>(links[number].toParent[0]));
    std::printf("process %d: made %d, heard %d of them, heard %d of %d by others\n", number,
                result.made, result.heardOwn, result.heard, all - result.made);
    right = right && result.heardOwn == result.made && result.heard == all - result.made;
  }
  for (int number = 0; number < kProcesses; ++number) wait(nullptr);
  const std::size_t stored =
      std::hash<std::string>()(contentsOf(openTree(storeIn(directory.path()))));
  for (const std::size_t content : contents) right = right && content == stored;
  std::printf("%d changes of %d threads in %d processes: %s\n", all, kWriters, kProcesses,
              right ? "nothing lost, all trees are the same as the store" : "NOT all the same");
  return right ? 0 : 1;
}

}  // namespace
}  // namespace test

int main(int argc, char** argv) { return test::run(argc > 1 ? std::atoi(argv[1]) : 5); }
