// The time until another process receives the event of a change: from the call of the set, and from
// its return. Prints a target for the median; nothing checks it.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "bench/temporary_directory.h"
#include "service/events.h"
#include "service/settings.h"
#include "service/z_settings.h"

namespace {

using zlutil::settings::Settings;
using zlutil::settings::SettingsValueChangeEvent;
using zlutil::settings::ZSettings;

constexpr int kChanges = 500;
constexpr char kKey[] = "shared", kLevel[] = "user";

// All processes of a machine share this clock.
long now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

template <class Type>
void send(int pipe, const Type& value) {
  if (write(pipe, &value, sizeof value) != sizeof value) _exit(1);
}
template <class Type>
Type receive(int pipe) {
  Type value;
  if (read(pipe, &value, sizeof value) != sizeof value) _exit(1);
  return value;
}

// The other process: sends a first time once it listens, then the time of each event.
void listen(int pipe) {
  const auto root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
  const auto connection = root->addListener<SettingsValueChangeEvent>(
      [pipe](const SettingsValueChangeEvent&) { send(pipe, now()); });
  send(pipe, now());
  pause();
}

void print(const char* from, std::vector<double>& times) {
  std::sort(times.begin(), times.end());
  std::printf("%-36s median %.2f ms, 99th percentile %.2f ms (target of the median: 10)\n", from,
              times[times.size() / 2] / 1e6, times[times.size() * 99 / 100] / 1e6);
}

}  // namespace

int main() {
  const bench::TemporaryDirectory directory;
  setenv("SETTINGS_USERDIR", directory.path().c_str(), 1);
  int pipes[2];
  if (pipe(pipes) != 0) return 1;
  // Forks before this process starts any thread.
  const pid_t child = fork();
  if (child == 0) listen(pipes[1]);
  receive<long>(pipes[0]);
  const auto root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
  ZSettings::createSettingsNode(kKey, true, true, {})->attachTo(root);
  std::vector<double> fromSet, fromReturn;
  for (int change = 0; change < kChanges; ++change) {
    const long before = now();
    root->setAny(kKey, change, kLevel);
    const long returned = now();
    const long heard = receive<long>(pipes[0]);
    fromSet.push_back(static_cast<double>(heard - before));
    fromReturn.push_back(static_cast<double>(heard - returned));
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  print("heard by another process, from the set", fromSet);
  print("the same, from the set's return", fromReturn);
}
