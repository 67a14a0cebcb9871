// Kills a process that changes settings, at random moments and over and over. Checks that the store
// then has every acknowledged change, and all or nothing of an unfinished one.
//
//   kill_test [kills]     prints the kills, and the acknowledged, lost and torn changes; fails if
//   any
//                         is lost or torn, or if the database is damaged
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <random>

#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

constexpr int kKeys = 20;          // of one commit
constexpr int kPrepared = 4;       // changes before the first kill
constexpr int kLongestLife = 150;  // milliseconds after the first acknowledgement

std::string keyName(int key) { return "k" + std::to_string(key); }

std::string copyName(int round) { return round % 2 == 0 ? "even" : "odd"; }

// Makes the n-th change of a series in rounds of four: sets a key, commits kKeys values, adds a
// copy of them, removes the copy of the round before. Each is one transaction, and leaves another
// state.
void makeChange(const NodePtr& root, int n) {
  const SettingsPtr many = root->getChild("many");
  const int round = n / 4;
  switch (n % 4) {
    case 0:
      root->setAny("single", n, "user");
      break;
    case 1: {
      SettingsValues values;
      for (int key = 0; key < kKeys; ++key) values.emplace_back(many->getChild(keyName(key)), n);
      if (!setAll(root, values, "user").empty()) std::abort();
      break;
    }
    case 2:
      root->copySubtree(many, copyName(round));
      break;
    default:
      root->removeNode(copyName(round - 1));
  }
}

// Returns the value that all keys of the node have; -1 if they differ or one is missing.
int commonValue(const SettingsPtr& node) {
  if (!node || node->getChildren().size() != kKeys) return -1;
  const int value = intAt(node, keyName(0));
  for (int key = 1; key < kKeys; ++key) {
    if (intAt(node, keyName(key)) != value) return -1;
  }
  return value;
}

// Returns the last change that the tree shows; -1 if it is torn, that is, not the state after any
// change of the series.
int lastChange(const NodePtr& root) {
  const int single = intAt(root, "single"), many = commonValue(root->getChild("many"));
  const int round = single / 4;
  const SettingsPtr older = root->getChild(copyName(round - 1)),
                    newer = root->getChild(copyName(round));
  if (older && commonValue(older) != single - 3) return -1;
  if (newer && commonValue(newer) != single + 1) return -1;
  if (many == single - 3) return older && !newer ? single : -1;
  if (many != single + 1) return -1;
  if (older) return newer ? single + 2 : single + 1;
  return newer ? single + 3 : -1;
}

// Returns whether the history is that of the values: the last one that it has for each path is the
// stored one, and no commit is missing.
bool hasWholeHistory(SqliteDatabase& database) {
  return database.number(
             "SELECT count(*) FROM (SELECT path, new, max(id) FROM history"
             " WHERE change = 'set' GROUP BY path) LEFT JOIN settings USING (path)"
             " WHERE new IS NOT value") == 0 &&
         database.number("SELECT max(id) >> 28 FROM history") ==
             database.number("SELECT max(revision) FROM journal WHERE changes <> ''");
}

[[noreturn]] void runChild(const std::string& directory, int next, int pipe) {
  const NodePtr root = openTree(storeIn(directory));
  for (int n = next;; ++n) {
    makeChange(root, n);
    if (write(pipe, &n, sizeof n) != sizeof n) _exit(1);
  }
}

void prepare(const std::string& directory) {
  const NodePtr root = openTree(storeIn(directory));
  addKey(root, "single");
  const SettingsPtr many = addNode(root, "many");
  for (int key = 0; key < kKeys; ++key) addKey(many, keyName(key));
  addNode(root, copyName(1));
  for (int n = 0; n < kPrepared; ++n) makeChange(root, n);
}

int run(int kills) {
  const TemporaryDirectory directory;
  prepare(directory.path());
  std::mt19937 random(std::random_device{}());
  int next = kPrepared, acknowledged = 0, lost = 0, torn = 0, broken = 0;
  for (int kill = 0; kill < kills; ++kill) {
    int ends[2];
    if (pipe(ends) != 0) return 1;
    const pid_t child = fork();
    if (child == 0) runChild(directory.path(), next, ends[1]);
    close(ends[1]);
    int last = next - 1;
    const bool started = read(ends[0], &last, sizeof last) == sizeof last;
    usleep(random() % (1000 * kLongestLife));
    ::kill(child, SIGKILL);
    while (read(ends[0], &last, sizeof last) == sizeof last) {
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    if (!started) return std::printf("the child does not change anything\n"), 1;
    acknowledged += last - next + 1;

    SqliteDatabase shell(directory.file("settings-1.db"), SQLITE_OPEN_READWRITE, 1000);
    if (shell.text("PRAGMA integrity_check") != "ok" || !hasWholeHistory(shell)) ++broken;
    const NodePtr root = openTree(storeIn(directory.path()));
    const int found = lastChange(root);
    if (found < 0) {
      ++torn;
      break;
    }
    if (found < last) lost += last - found;
    if (found > last + 1) ++torn;
    next = found + 1;
  }
  // A kill damages no database, so none may have been restored.
  for (const auto& file : std::filesystem::directory_iterator(directory.path())) {
    if (file.path().string().find(".damaged-") != std::string::npos) ++broken;
  }
  std::printf("%d kills, %d acknowledged changes, %d lost, %d torn, %d damaged databases\n", kills,
              acknowledged, lost, torn, broken);
  return lost || torn || broken ? 1 : 0;
}

}  // namespace
}  // namespace test

int main(int argc, char** argv) { return test::run(argc > 1 ? std::atoi(argv[1]) : 200); }
