#include "host/shared_store/process_exit.h"

#include <curl/curl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "base/never_destroyed.h"

namespace zlutil::settings::host {
namespace {

constexpr auto kLongestWait = std::chrono::milliseconds(500);

struct Uses {
  std::mutex mutex;
  std::condition_variable ended;
  // Guarded by the mutex.
  std::vector<const std::function<void()>*> wakes;
  bool isExiting = false;

  const pid_t process = getpid();
};

Uses& uses() {
  static base::NeverDestroyed<Uses> instance;
  return instance.get();
}

void endUses() {
  if (isForkedChild()) return;
  Uses& all = uses();
  std::unique_lock<std::mutex> lock(all.mutex);
  all.isExiting = true;
  for (const std::function<void()>* const wake : all.wakes) (*wake)();
  all.ended.wait_for(lock, kLongestWait, [&] { return all.wakes.empty(); });
}

}  // namespace

// Registered after the libraries have registered their own functions, so it runs before them.
void prepareNetwork() {
  static const int once = [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    uses();
    return std::atexit(endUses);
  }();
  static_cast<void>(once);
}

// The mutex may have been locked by a thread of the parent.
bool isForkedChild() { return getpid() != uses().process; }

bool isProcessExiting() {
  if (isForkedChild()) return true;
  const std::lock_guard<std::mutex> lock(uses().mutex);
  return uses().isExiting;
}

NetworkUse::NetworkUse(const std::function<void()>& wake) : wake_(&wake) {
  const std::lock_guard<std::mutex> lock(uses().mutex);
  uses().wakes.push_back(wake_);
}

NetworkUse::~NetworkUse() {
  const std::lock_guard<std::mutex> lock(uses().mutex);
  auto& wakes = uses().wakes;
  wakes.erase(std::find(wakes.begin(), wakes.end(), wake_));
  uses().ended.notify_all();
}

}  // namespace zlutil::settings::host
