// The cost of durability, beside bare SQLite in the same run: a table, a journal mode and
// synchronisation like the store's, and nothing else. Both take turns, and medians are compared.
// Prints one line for each work, with a target for the reader; nothing checks the targets.
#include <sqlite3.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "bench/temporary_directory.h"
#include "bench/tree.h"

namespace {

using bench::keyName;
using bench::SettingsPtr;
using zlutil::contextmgr::ZcrID;
using zlutil::settings::Settings;
using zlutil::settings::SettingsValues;
using zlutil::settings::ZSettings;

constexpr int kStored = 10000;
constexpr int kCommit = 1000;
constexpr auto kSlice = std::chrono::milliseconds(100);

// An SQLite database with a table like the store's and kStored rows.
class Bare {
 public:
  explicit Bare(std::string file) : file_(std::move(file)) {
    open();
    run("CREATE TABLE settings(path TEXT PRIMARY KEY, type TEXT NOT NULL, value NOT NULL)"
        " WITHOUT ROWID");
    sqlite3_prepare_v2(database_,
                       "INSERT INTO settings VALUES(?1, 'int', ?2) ON CONFLICT(path)"
                       " DO UPDATE SET type = excluded.type, value = excluded.value",
                       -1, &upsert_, nullptr);
    sqlite3_prepare_v2(database_, "BEGIN IMMEDIATE", -1, &begin_, nullptr);
    sqlite3_prepare_v2(database_, "COMMIT", -1, &commit_, nullptr);
    for (int key = 0; key < kStored; ++key) paths_.push_back("n." + keyName(key));
    putAll(kStored, 0);
  }
  ~Bare() {
    for (sqlite3_stmt* statement : {upsert_, begin_, commit_}) sqlite3_finalize(statement);
    sqlite3_close(database_);
  }

  // Sets the first `count` keys to the value in one transaction.
  void putAll(int count, int value) {
    const std::string text = std::to_string(value);
    step(begin_);
    for (int key = 0; key < count; ++key) {
      sqlite3_bind_text(upsert_, 1, paths_[key].data(), static_cast<int>(paths_[key].size()),
                        SQLITE_STATIC);
      sqlite3_bind_text(upsert_, 2, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
      step(upsert_);
    }
    step(commit_);
  }

  // Opens the file anew and reads every row.
  void readAll() const {
    sqlite3* database = nullptr;
    sqlite3_open(file_.c_str(), &database);
    sqlite3_stmt* all = nullptr;
    sqlite3_prepare_v2(database, "SELECT path, type, value FROM settings", -1, &all, nullptr);
    int rows = 0;
    while (sqlite3_step(all) == SQLITE_ROW) rows += sqlite3_column_text(all, 2) != nullptr;
    sqlite3_finalize(all);
    sqlite3_close(database);
    if (rows != kStored) throw std::runtime_error("the bare database is not complete");
  }

 private:
  void open() {
    sqlite3_open(file_.c_str(), &database_);
    run("PRAGMA journal_mode=PERSIST");
    run("PRAGMA synchronous=FULL");
  }
  void run(const char* sql) {
    if (sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(database_));
    }
  }
  void step(sqlite3_stmt* statement) {
    if (sqlite3_step(statement) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database_));
    sqlite3_reset(statement);
  }

  const std::string file_;
  std::vector<std::string> paths_;
  sqlite3* database_ = nullptr;
  sqlite3_stmt *upsert_ = nullptr, *begin_ = nullptr, *commit_ = nullptr;
};

// Returns the node "n" of the process's tree, with kStored ints at the user level.
SettingsPtr makeStored() {
  const SettingsPtr root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
  const SettingsPtr node = ZSettings::createSettingsNode("n", false, true, {});
  for (int key = 0; key < kStored; ++key) {
    bench::add(node, keyName(key), true);
    node->setAny(keyName(key), 0, "user");
  }
  node->attachTo(root);
  return node;
}

template <class Work>
double microseconds(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
      .count();
}

double median(std::vector<double> times) {
  std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
  return times[times.size() / 2];
}

struct Medians {
  double floor, measured;
};

// Runs both works in turn with the number of the round; each is first in every other round.
template <class Floor, class Work>
Medians takeTurns(int rounds, const Floor& floor, const Work& work) {
  std::vector<double> floors, measured;
  for (int round = 1; round <= rounds; ++round) {
    if (round % 2 == 0) floors.push_back(microseconds([&] { floor(round); }));
    measured.push_back(microseconds([&] { work(round); }));
    if (round % 2 != 0) floors.push_back(microseconds([&] { floor(round); }));
  }
  return {median(floors), median(measured)};
}

void printRatio(const char* work, const Medians& medians, const char* target) {
  std::printf("%-42s %9.0f us, bare %9.0f us: %.2f times (target %s)\n", work, medians.measured,
              medians.floor, medians.measured / medians.floor, target);
}

void singleSets(Bare& bare, const SettingsPtr& node) {
  const std::string key = keyName(0), level = "user";
  printRatio("durable set of one key of 10,000",
             takeTurns(
                 3000, [&](int round) { bare.putAll(1, round); },
                 [&](int round) { node->setAny(key, round, level); }),
             "1.3");
}

void commits(Bare& bare, const SettingsPtr& node) {
  SettingsValues values;
  for (int key = 0; key < kCommit; ++key) values.emplace_back(node->getChild(keyName(key)), 0);
  printRatio("durable commit of 1,000 keys of 10,000",
             takeTurns(
                 300, [&](int round) { bare.putAll(kCommit, -round); },
                 [&](int round) {
                   for (auto& change : values) change.second = -round;
                   const auto all = boost::make_iterator_range(values.cbegin(), values.cend());
                   if (!node->setMultiple(all, "user", 0).empty()) {
                     throw std::runtime_error("the commit was refused");
                   }
                 }),
             "1.3");
}

// Opens trees of other contexts, each on a copy of the database, after the one before has made its
// first backup and is idle.
void opening(const Bare& bare, const std::string& directory) {
  constexpr int kFirstContext = 100, kTrees = 21;
  std::vector<double> reads, openings;
  for (int context = kFirstContext; context < kFirstContext + kTrees; ++context) {
    const std::string name = directory + "/settings-";
    const std::string mine = name + std::to_string(context);
    std::filesystem::copy_file(name + "1.db", mine + ".db");
    reads.push_back(microseconds([&] { bare.readAll(); }));
    openings.push_back(microseconds([&] {
      if (!Settings::getSettingsRoot(ZcrID(context))->getChild("n")) {
        throw std::runtime_error("nothing was read");
      }
    }));
    while (!std::filesystem::exists(mine + ".db.backup-1")) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  const double opened = median(openings), read = median(reads);
  std::printf("%-42s %9.0f us, bare %9.0f us: %.1f ms beyond it (target 50)\n",
              "open a tree with 10,000 stored keys", opened, read, (opened - read) / 1000);
}

// Returns the reads per microsecond of one thread while another repeats the work.
template <class Work>
double readsBeside(const SettingsPtr& node, const Work& work) {
  std::atomic<bool> done{false};
  std::thread other([&] {
    while (!done) work();
  });
  const std::string key = keyName(7000), noLevel;
  const auto end = std::chrono::steady_clock::now() + kSlice;
  double count = 0;
  while (std::chrono::steady_clock::now() < end) {
    for (int read = 0; read < 100; ++read, ++count) node->getValue(key, noLevel);
  }
  done = true;
  other.join();
  return count / std::chrono::duration<double, std::micro>(kSlice).count();
}

// Measures reads alone, beside durable sets, and beside writes to the bare database, which show how
// much of the slowdown is the machine's.
void readingBesideWriting(Bare& bare, const SettingsPtr& node) {
  const std::string key = keyName(1), level = "user";
  int value = 0;
  std::vector<double> alone, beside, besideBare;
  for (int slice = 0; slice < 31; ++slice) {
    alone.push_back(
        readsBeside(node, [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }));
    beside.push_back(readsBeside(node, [&] { node->setAny(key, ++value, level); }));
    besideBare.push_back(readsBeside(node, [&] { bare.putAll(1, ++value); }));
  }
  std::printf("%-42s %9.2f per us, alone %5.2f: %.2f of it (target 0.9)\n",
              "reads while another thread sets durably", median(beside), median(alone),
              median(beside) / median(alone));
  std::printf("%-42s %9.2f per us, alone %5.2f: %.2f of it\n",
              "reads while it writes to bare SQLite", median(besideBare), median(alone),
              median(besideBare) / median(alone));
}

}  // namespace

int main() {
  const bench::TemporaryDirectory directory, bareDirectory;
  setenv("SETTINGS_USERDIR", directory.path().c_str(), 1);
  Bare bare(bareDirectory.path() + "/bare.db");
  const SettingsPtr node = makeStored();
  singleSets(bare, node);
  commits(bare, node);
  readingBesideWriting(bare, node);
  opening(bare, directory.path());
}
