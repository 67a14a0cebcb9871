// Programs that end while other processes change the settings that they listen to: the thread that
// watches the store must not keep them from ending, nor crash them.
//
//   exit_test [runs]     runs each way to end; prints how many programs ended by themselves with 0
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>

#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using zlutil::settings::SettingsValueChangeEvent;

constexpr unsigned kTimeLimit = 60;  // seconds
constexpr char kReturnFromMain[] = "return-from-main", kExitInListener[] = "exit-in-listener";

// Runs the program that ends: after so many milliseconds or, on the thread that delivers external
// changes, at the first event.
int end(const char* way, int milliseconds) {
  alarm(kTimeLimit);
  const bool inListener = std::strcmp(way, kExitInListener) == 0;
  const SettingsPtr root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
  static zlutil::eventmgr::ScopedConnection connection(
      root->addListener<SettingsValueChangeEvent>([inListener](const SettingsValueChangeEvent&) {
        if (inListener) std::exit(0);
      }));
  if (inListener) pause();
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  return 0;
}

int run(char* program, int runs) {
  const TemporaryDirectory directory;
  setenv("SETTINGS_USERDIR", directory.path().c_str(), 1);
  const auto root = openTree(storeIn(directory.path(), 20000));
  addKey(root, "k");
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (int value = 0; !done; ++value) root->setAny("k", value, "user");
  });
  std::mt19937 random(1);
  int clean = 0, all = 0;
  for (const char* way : {kReturnFromMain, kExitInListener}) {
    for (int run = 0; run < runs; ++run, ++all) {
      std::string wait = std::to_string(random() % 20), ending = way;
      char* const arguments[] = {program, ending.data(), wait.data(), nullptr};
      pid_t child = 0;
      int status = 0;
      if (posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, arguments, environ) != 0) break;
      waitpid(child, &status, 0);
      if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        ++clean;
      } else {
        std::printf("%s, %s ms: %s %d\n", way, wait.c_str(),
                    WIFSIGNALED(status) ? "ended by signal" : "exit code",
                    WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
      }
    }
  }
  done = true;
  writer.join();
  std::printf("%d of %d programs ended by themselves\n", clean, all);
  return clean == all && all > 0 ? 0 : 1;
}

}  // namespace
}  // namespace test

int main(int argc, char** argv) {
  if (argc == 3) return test::end(argv[1], std::atoi(argv[2]));
  return test::run(argv[0], argc > 1 ? std::atoi(argv[1]) : 50);
}
