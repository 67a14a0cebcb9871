#include "service/problems.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>

#include "base/mutex.h"
#include "base/never_destroyed.h"
#include "base/text.h"

namespace zlutil::settings {
namespace {

constexpr std::size_t kKept = 256;

struct Problems {
  base::Mutex mutex;
  std::deque<std::string> last GUARDED_BY(mutex);
  std::size_t waiting GUARDED_BY(mutex) = 0;  // how many at the end of `last` wait to be fetched
  int takers GUARDED_BY(mutex) = 0;
  std::atomic<pid_t> printsAtExit{0};  // the process; changed under the mutex
  std::atomic<std::uint64_t> count{0};

  std::vector<std::string> takeWaiting() REQUIRES(mutex) {
    std::vector<std::string> taken(last.end() - static_cast<std::ptrdiff_t>(waiting), last.end());
    waiting = 0;
    return taken;
  }
};

Problems& problems() {
  static base::NeverDestroyed<Problems> instance;
  return instance.get();
}

void print(const std::string& line) {
  std::fprintf(stderr, "%s\n", base::displayFromNarrow(line).c_str());
}

void printWaiting() {
  for (const std::string& line : fetchProblems()) print(line);
}

void printAtExit() {
  // A forked child has copies of what waits in its parent, and perhaps a lock that nobody releases.
  if (problems().printsAtExit == getpid()) printWaiting();
}

}  // namespace

void reportProblem(const std::string& problem) {
  const std::string line = base::withControlsEscaped(problem);
  std::string unread;
  bool isTaken = false;
  Problems& all = problems();
  {
    const base::MutexLock lock(all.mutex);
    all.last.push_back(line);
    isTaken = all.takers > 0;
    if (isTaken) ++all.waiting;
    if (all.last.size() > kKept) {
      if (all.waiting > kKept) {
        unread = all.last.front();
        --all.waiting;
      }
      all.last.pop_front();
    }
    all.count.fetch_add(1, std::memory_order_release);
  }
  if (!isTaken) print(line);
  if (!unread.empty()) print(unread);
}

std::vector<std::string> noticedProblems() {
  Problems& all = problems();
  const base::MutexLock lock(all.mutex);
  return {all.last.begin(), all.last.end()};
}

const std::atomic<std::uint64_t>& takeProblemsOver() {
  Problems& all = problems();
  const base::MutexLock lock(all.mutex);
  ++all.takers;
  if (all.printsAtExit == 0 && std::atexit(printAtExit) == 0) all.printsAtExit = getpid();
  return all.count;
}

void giveProblemsBack() {
  Problems& all = problems();
  {
    const base::MutexLock lock(all.mutex);
    if (--all.takers > 0) return;
  }
  printWaiting();
}

std::vector<std::string> fetchProblems() {
  Problems& all = problems();
  const base::MutexLock lock(all.mutex);
  return all.takeWaiting();
}

}  // namespace zlutil::settings
