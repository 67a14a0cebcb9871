#include "host/user_store/stamp_watch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>

#include <atomic>
#include <cstdio>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "host/os/file_descriptor.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/os/signals_blocked.h"

namespace zlutil::settings::host {
namespace {

constexpr int kLongestWait = 1000;  // milliseconds
// The shortest time between two calls, so that a burst of commits costs one.
constexpr int kPause = 5;  // milliseconds

void drain(int descriptor) {
  char events[4096];
  while (read(descriptor, events, sizeof events) > 0) {
  }
}

}  // namespace

struct StampWatch::Shared {
  Shared(const std::string& name, std::function<void()> function)
      : file(name),
        shownName(base::displayFromNarrow(base::withControlsEscaped(shownFileName(name)))),
        wake(std::move(function)),
        notify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
        stop(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

  void run() {
    while (!stopped) {
      watchFile();
      drain(notify.get());
      callWake();
      if (stopped) return;
      wait(-1, kPause);
      wait(notify.get(), kLongestWait);
    }
  }

  // Catches every failure, because the next call may succeed: memory may be free again.
  void callWake() {
    try {
      wake();
    } catch (const std::exception& failure) {
      // Reported without allocating, and once only: it may fail every second.
      if (!std::exchange(hasFailed, true)) {
        std::fprintf(stderr, "%s: cannot check for changes: %s. The check is repeated.\n",
                     shownName.c_str(), failure.what());
      }
    }
  }

  // Watching again is harmless, and follows a file that was replaced.
  void watchFile() const {
    if (notify) inotify_add_watch(notify.get(), file.c_str(), IN_MODIFY);
  }

  // Without descriptors (their number is limited) the thread still wakes at the longest wait.
  void wait(int descriptor, int timeout) const {
    struct pollfd events[] = {{stop.get(), POLLIN, 0}, {descriptor, POLLIN, 0}};
    poll(events, 2, timeout);
  }

  const std::string file, shownName;
  const std::function<void()> wake;
  const FileDescriptor notify;
  const FileDescriptor stop;
  std::atomic<bool> stopped{false};
  bool hasFailed = false;  // used by the thread only
  std::thread thread;
};

StampWatch::StampWatch(const std::string& file, std::function<void()> wake)
    : shared_(std::make_shared<Shared>(file, std::move(wake))) {
  try {
    const SignalsBlocked blocked;
    shared_->thread = std::thread([shared = shared_] { shared->run(); });
  } catch (const std::system_error& failure) {
    logError(shownFileName(file) + " is not watched: " + failure.what());
  }
}

bool StampWatch::isRunning() const { return shared_->thread.joinable(); }

StampWatch::~StampWatch() {
  shared_->stopped = true;
  eventfd_write(shared_->stop.get(), 1);
  if (shared_->thread.get_id() == std::this_thread::get_id()) {
    shared_->thread.detach();
  } else if (shared_->thread.joinable()) {
    shared_->thread.join();
  }
}

}  // namespace zlutil::settings::host
