// From the start to the end of `settings get`, beside a program that opens the same database and
// reads one row (this one, with the database as its argument) and beside `git config --get`. All
// take turns, and medians are compared.
//
//   program_start_bench PROGRAM
#include <fcntl.h>
#include <spawn.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/temporary_directory.h"

namespace {

using Command = std::vector<std::string>;

constexpr int kKeys = 200, kRounds = 200;
constexpr char kKey[] = "bench.key100";

int readOneRow(const char* file) {
  sqlite3* database = nullptr;
  sqlite3_stmt* row = nullptr;
  sqlite3_open_v2(file, &database, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_prepare_v2(database, "SELECT value FROM settings WHERE path = ?1", -1, &row, nullptr);
  sqlite3_bind_text(row, 1, kKey, -1, SQLITE_STATIC);
  const bool isFound = sqlite3_step(row) == SQLITE_ROW;
  if (isFound) std::printf("%s\n", sqlite3_column_text(row, 0));
  sqlite3_finalize(row);
  sqlite3_close(database);
  return isFound ? 0 : 1;
}

// Runs the command without its output. Returns the microseconds that it took.
double run(const Command& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  const auto start = std::chrono::steady_clock::now();
  pid_t child;
  int status = -1;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
    waitpid(child, &status, 0);
  }
  const auto end = std::chrono::steady_clock::now();
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) throw std::runtime_error(command[0] + " has failed");
  return std::chrono::duration<double, std::micro>(end - start).count();
}

double median(std::vector<double> times) {
  std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
  return times[times.size() / 2];
}

// Stores kKeys settings that a file of the factory level defines, and writes a file of git with as
// many.
void prepare(const std::string& program, const std::string& directory) {
  const std::string file = directory + "/factory.xml";
  {
    std::ofstream settings(file), git(directory + "/gitconfig");
    settings << "<settings version=\"1\"><node name=\"bench\">\n";
    git << "[bench]\n";
    for (int key = 0; key < kKeys; ++key) {
      settings << "<key name=\"key" << key << "\" type=\"int\"><value>" << key
               << "</value></key>\n";
      git << "key" << key << " = " << key << '\n';
    }
    settings << "</node></settings>\n";
  }
  setenv("SETTINGS_USERDIR", directory.c_str(), 1);
  setenv("SETTINGS_FACTORYDIR", directory.c_str(), 1);
  run({program, "load", file});
}

}  // namespace

int main(int argc, char** argv) {
  const std::string argument = argc > 1 ? argv[1] : "";
  if (argument.size() > 3 && argument.compare(argument.size() - 3, 3, ".db") == 0) {
    return readOneRow(argument.c_str());
  }
  const bench::TemporaryDirectory directory;
  prepare(argument, directory.path());
  const Command commands[] = {
      {"/proc/self/exe", directory.path() + "/settings-1.db"},
      {argument, "get", kKey},
      {"git", "config", "--file", directory.path() + "/gitconfig", "--get", kKey}};
  std::vector<double> times[3];
  for (int round = 0; round < kRounds; ++round) {
    for (int which = 0; which < 3; ++which) {
      times[(round + which) % 3].push_back(run(commands[(round + which) % 3]));
    }
  }
  const double bare = median(times[0]), ours = median(times[1]), git = median(times[2]);
  std::printf("%-42s %9.0f us, bare %9.0f us: %.2f times (target 2); git config --get %.0f us\n",
              "settings get, from start to end", ours, bare, ours / bare, git);
}
