// watch: prints changes as they come, also those of other processes.
#include <csignal>
#include <ctime>
#include <iostream>
#include <memory>
#include <mutex>

#include "command_line/commands.h"
#include "command_line/values.h"
#include "service/events.h"

namespace command_line {
namespace {

using namespace zlutil::settings;
using zlutil::eventmgr::ScopedConnection;

struct WatchOptions {
  std::string path;
  bool asJson = false;
  int count = 0;
};

// Prints events, on the threads that deliver them. Ends the wait of main()'s thread by a signal.
// Its listeners share it: one of them may still run when its connection has ended.
class Printer {
 public:
  explicit Printer(const WatchOptions& options) : options_(options), waiting_(pthread_self()) {}

  void print(const char* event, const SettingsPtr& entry, const std::string& path) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isComplete()) return;
    const SettingsPtr parent = entry->getParent();
    boost::any value;
    if (entry->isKey() && parent) value = parent->getValue(entry->getName(), "");
    if (options_.asJson) {
      std::cout << Json{{"event", event}, {"path", path}, {"value", jsonOf(value)}}.dump();
    } else {
      std::cout << event << ' ' << path;
      if (!value.empty()) std::cout << " = " << lineOf(value);
    }
    std::cout << std::endl;
    ++printed_;
    if (isComplete()) pthread_kill(waiting_, SIGTERM);
  }

 private:
  bool isComplete() const { return options_.count > 0 && printed_ >= options_.count; }

  const WatchOptions options_;
  const pthread_t waiting_;
  std::mutex mutex_;
  int printed_ = 0;
};

std::string pathBelow(const SettingsPtr& parent, const SettingsPtr& child) {
  const std::string path = parent->getPath();
  return path.empty() ? child->getName() : path + "." + child->getName();
}

void watch(const Invocation& invocation, const WatchOptions& options) {
  // Blocked before any thread is started, so that none of them takes a signal for this one.
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGINT);
  sigaddset(&ends, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  const SettingsPtr root = invocation.root();
  const SettingsPtr top = requireEntry(root, options.path);
  const auto printer = std::make_shared<Printer>(options);
  const ScopedConnection changes(
      top->addListener<SettingsValueChangeEvent>([printer](const SettingsValueChangeEvent& event) {
        printer->print("changed", event.getObj(), event.getObj()->getPath());
      }));
  const ScopedConnection additions(
      top->addListener<SettingsAddNodeEvent>([printer](const SettingsAddNodeEvent& event) {
        printer->print("added", event.getObj(), pathBelow(event.getParentObj(), event.getObj()));
      }));
  const ScopedConnection removals(
      top->addListener<SettingsRemoveNodeEvent>([printer](const SettingsRemoveNodeEvent& event) {
        printer->print("removed", event.getObj(), pathBelow(event.getParentObj(), event.getObj()));
      }));
  std::cerr << "Watching; Ctrl+C ends." << std::endl;
  int signal = 0;
  sigwait(&ends, &signal);
}

}  // namespace

void addWatchCommand(CLI::App& app, Invocation& invocation) {
  const auto options = std::make_shared<WatchOptions>();
  CLI::App* const watch =
      app.add_subcommand("watch", "Print changes as they come, also those of other processes");
  watch->add_option("PATH", options->path, "The entry; the root if it is left out");
  watch->add_option("--count", options->count, "End after so many changes")
      ->check(CLI::PositiveNumber);
  watch->add_flag("--json", options->asJson, "Print one JSON object a line");
  watch->callback([&invocation, options] {
    invocation.chosen = [&invocation, options] { ::command_line::watch(invocation, *options); };
  });
}

}  // namespace command_line
