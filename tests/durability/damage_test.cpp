// Files with flipped bytes and cut tails: the store opens, or restores and reports. It does not
// crash, and no entry vanishes without a report.
#include <random>

#include "host/user_store/rollback_journal.h"
#include "tests/durability/failing_system.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

constexpr char kDatabase[] = "settings-1.db";
constexpr char kJournal[] = "settings-1.db-journal";
constexpr char kLog[] = "settings-1.db-wal";
constexpr char kStamp[] = "settings-1.stamp";
constexpr int kPositions = 150;
constexpr int kRandomDamages = 200;

class DamageTest : public testing::Test {
 protected:
  // Makes the files of a store in three states: at rest; after a process was killed just before the
  // end of a transaction; and of an earlier version, with the last changes in its log.
  DamageTest() {
    const TemporaryDirectory directory;
    const NodePtr root = openTree(storeIn(directory.path()));
    const SettingsPtr first = addNode(root, "n0");
    for (int key = 0; key < 20; ++key) {
      addKey(first, "k" + std::to_string(key));
      first->setAny("k" + std::to_string(key), std::string(50, 'v'), "user");
    }
    for (int node = 1; node < 10; ++node) root->copySubtree(first, "n" + std::to_string(node));
    crash(directory, root);
    useLog();
  }

  // Keeps the files at the last moment at which a transaction can be rolled back.
  void crash(const TemporaryDirectory& directory, const NodePtr& root) {
    std::string contents, database, stamp;
    const std::function<void()> look = [&] {
      if (stateOfJournal(directory.file(kJournal), directory.file(kDatabase)) !=
          JournalState::kWhole) {
        return;
      }
      contents_ = contents;
      database_ = database;
      stamp_ = stamp;
      crashed_ = directory.read(kDatabase);
      journal_ = directory.read(kJournal);
    };
    const SettingsPtr node = root->getChild("n0"), other = root->getChild("n9");
    bool isOver = false;
    for (int n = 1; !isOver; ++n) {
      contents = contentsOf(root);
      database = directory.read(kDatabase);
      stamp = directory.read(kStamp);
      const std::string value(50, static_cast<char>('a' + n % 26));
      interruptOn(n, look);
      setAll(root, {{node->getChild("k0"), value}, {other->getChild("k9"), value}}, "user");
      isOver = !hasCome();
      failOn(0, 0);
    }
  }

  void useLog() {
    const TemporaryDirectory directory;
    directory.write(kStamp, stamp_);
    SqliteDatabase old(directory.write(kDatabase, database_), SQLITE_OPEN_READWRITE, 0);
    old.execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0");
    logged_ = directory.read(kDatabase);
    UserStoreStamp stamp(directory.file(kStamp));
    for (const char* change : {"n0.k0' late", "n0.k1' later"}) {
      const std::string path(change, 5), value(change + 7);
      old.execute(("BEGIN; UPDATE settings SET value = '" + value + "' WHERE path = '" + path +
                   "'; INSERT INTO journal(changes) VALUES('=" + path + "'); COMMIT")
                      .c_str());
      stamp.note(old.number("SELECT max(revision) FROM journal"));
    }
    log_ = directory.read(kLog);
    loggedStamp_ = directory.read(kStamp);
  }

  // Opens a store on such files. Returns its contents and its reports.
  std::pair<std::string, std::string> open(const std::string& database, const std::string& journal,
                                           const std::string& backup = "") {
    const TemporaryDirectory directory;
    directory.write(kDatabase, database);
    directory.write(kStamp, stamp_);
    directory.write(kJournal, journal);
    if (!backup.empty()) directory.write(std::string(kDatabase) + ".backup-1", backup);
    testing::internal::CaptureStderr();
    std::string contents;
    {
      const NodePtr root = openTree(storeIn(directory.path()));
      contents = contentsOf(root);
      try {
        addKey(root, "new");
      } catch (const std::exception&) {
        // A store that cannot be opened has reported it.
      }
    }
    return {contents, testing::internal::GetCapturedStderr()};
  }

  // Returns the contents of the files whose names have this part and this end.
  static std::vector<std::string> filesLike(const TemporaryDirectory& directory,
                                            const std::string& part, const std::string& end) {
    std::vector<std::string> contents;
    for (const auto& file : std::filesystem::directory_iterator(directory.path())) {
      const std::string name = file.path().filename();
      const bool ends =
          name.size() > end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0;
      if (ends && name.find(part) != std::string::npos) contents.push_back(directory.read(name));
    }
    return contents;
  }

  static std::string damagedAtRandom(std::string log, int seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    for (int part = 1 + static_cast<int>(random() % 4); part > 0; --part) {
      const std::size_t from = random() % log.size(), to = random() % log.size();
      const std::size_t size = std::min<std::size_t>(1 + random() % 5000, log.size() - from);
      switch (random() % 4) {
        case 0:
          for (std::size_t at = from; at < from + size; ++at) log[at] = static_cast<char>(random());
          break;
        case 1:
          log.replace(from, size, size, '\0');
          break;
        case 2:
          log.insert(to, log.substr(from, size));
          break;
        default:
          log.erase(from, std::min(size, log.size() - 1));
      }
    }
    return log;
  }

  static std::size_t lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
  }

  // Opens a store on such a log. Checks that it has an earlier state, and reports the lost
  // transactions and the copy of the log.
  void expectLogOpens(const std::string& log) {
    const TemporaryDirectory directory;
    directory.write(kDatabase, logged_);
    directory.write(kLog, log);
    directory.write(kStamp, loggedStamp_);
    testing::internal::CaptureStderr();
    const std::string found = contentsOf(openTree(storeIn(directory.path())));
    const std::string reports = testing::internal::GetCapturedStderr();
    const bool hasFirst = found.find("k0 = string late\n") != std::string::npos;
    const bool hasSecond = found.find("k1 = string later\n") != std::string::npos;
    EXPECT_EQ(lines(found), lines(contents_));
    EXPECT_TRUE(hasFirst || !hasSecond);
    const std::string lost = hasSecond  ? ""
                             : hasFirst ? "Lost: the last transaction."
                                        : "Lost: the last 2 transactions.";
    EXPECT_EQ(lines(reports), hasSecond ? 0 : 1) << reports;
    EXPECT_NE(reports.find(lost), std::string::npos) << reports;
    if (hasSecond) return;
    EXPECT_NE(reports.find(".damaged-"), std::string::npos) << reports;
    EXPECT_EQ(filesLike(directory, ".damaged-", "-wal"), std::vector<std::string>{log});
    // It is reported once.
    testing::internal::CaptureStderr();
    EXPECT_EQ(contentsOf(openTree(storeIn(directory.path()))), found);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }

  std::string contents_, database_, stamp_, crashed_, journal_, logged_, log_, loggedStamp_;
};

TEST_F(DamageTest, AFlippedByteOfTheDatabaseLosesLittleOrIsReported) {
  for (int step = 0; step < kPositions; ++step) {
    // The first positions are in the header, the others all over the file.
    const std::size_t position = step < 50 ? step * 2 : (step - 50) * database_.size() / 100;
    std::string damaged = database_;
    damaged[position] = static_cast<char>(damaged[position] ^ 0xFF);
    const auto [found, reports] = open(damaged, "");
    EXPECT_TRUE(lines(found) + 1 >= lines(contents_) || !reports.empty()) << "at " << position;
  }
}

TEST_F(DamageTest, ADamagedDatabaseKeepsEverythingInItsBackup) {
  for (int step = 0; step <= 20; ++step) {
    const std::string cut = database_.substr(0, step * database_.size() / 21);
    const auto [found, reports] = open(cut, "", database_);
    EXPECT_EQ(found, contents_) << "cut at " << cut.size();
    EXPECT_NE(reports.find("Restored: the state of"), std::string::npos) << reports;
    EXPECT_NE(reports.find(".damaged-"), std::string::npos) << reports;
  }
}

TEST_F(DamageTest, ATruncatedDatabaseWithoutABackupIsReported) {
  for (int step = 1; step <= 20; ++step) {
    const auto [found, reports] = open(database_.substr(0, step * database_.size() / 21), "");
    EXPECT_NE(reports.find("There is no backup"), std::string::npos) << step << reports;
  }
}

TEST_F(DamageTest, ADatabaseWithoutPartOfItsSchemaKeepsItsReadableRows) {
  const struct {
    const char* damage;
    const char* report;
    bool keepsValues;
  } cases[] = {{"PRAGMA user_version=0", "nothing is lost", true},
               {"DROP TABLE journal", "There is no backup", true},
               {"DROP TABLE settings", "There is no backup", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.damage);
    const TemporaryDirectory directory;
    const std::string file = directory.write(kDatabase, database_);
    SqliteDatabase(file, SQLITE_OPEN_READWRITE, 0)
        .execute((std::string(c.damage) + "; INSERT INTO set_aside VALUES('n0.k0', 'int', '7');"
                                          " PRAGMA journal_mode=DELETE")
                     .c_str());
    testing::internal::CaptureStderr();
    const std::string found = contentsOf(openTree(storeIn(directory.path())));
    const std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_NE(reports.find(c.report), std::string::npos) << reports;
    // Of 200 keys and 10 nodes.
    EXPECT_EQ(lines(found), c.keepsValues ? lines(contents_) : 210u);
    EXPECT_EQ(SqliteDatabase(file, SQLITE_OPEN_READWRITE, 0)
                  .text("SELECT path || type || value FROM set_aside"),
              "n0.k0int7");
  }
}

TEST_F(DamageTest, ADamagedLogGivesAnEarlierStateAndIsReported) {
  ASSERT_GT(log_.size(), 1000u);
  expectLogOpens(log_);
  for (int step = 0; step < kPositions; ++step) {
    const std::size_t position = step < 50 ? step * 2 : (step - 50) * log_.size() / 100;
    SCOPED_TRACE("at " + std::to_string(position));
    std::string damaged = log_;
    damaged[position] = static_cast<char>(damaged[position] ^ 0xFF);
    expectLogOpens(damaged);
    if (position > 0) expectLogOpens(log_.substr(0, position));
  }
}

TEST_F(DamageTest, AStoreWithAnyDamageOfItsLogOpens) {
  for (int damage = 0; damage < kRandomDamages; ++damage) {
    SCOPED_TRACE(damage);
    expectLogOpens(damagedAtRandom(log_, damage));
  }
}

TEST_F(DamageTest, AnUnfinishedTransactionIsRolledBackOrItsDamagedJournalReported) {
  ASSERT_GT(journal_.size(), 1000u);
  ASSERT_NE(crashed_, database_);
  EXPECT_EQ(open(crashed_, journal_), std::pair(contents_, std::string()));
  // The transaction has changed two keys on different pages.
  const auto changed = [](const std::string& found) {
    const std::size_t one = found.find("\nn0.k0 = "), other = found.find("\nn9.k9 = ");
    return one == std::string::npos || other == std::string::npos
               ? std::string()
               : found.substr(one, 60) + found.substr(other, 60);
  };
  const auto expectRolledBackOrReported = [&](const std::string& journal,
                                              const std::string& backup) {
    const auto [found, reports] = open(crashed_, journal, backup);
    if (!reports.empty()) return;
    EXPECT_EQ(changed(found), changed(contents_));
    EXPECT_EQ(lines(found), lines(contents_));
  };
  for (int step = 0; step < 75; ++step) {
    const std::size_t position = step < 25 ? step : (step - 25) * journal_.size() / 50;
    SCOPED_TRACE("at " + std::to_string(position));
    std::string damaged = journal_;
    damaged[position] = static_cast<char>(damaged[position] ^ 0xFF);
    expectRolledBackOrReported(damaged, step % 4 == 0 ? database_ : "");
    if (position > 0)
      expectRolledBackOrReported(journal_.substr(0, position), step % 4 == 1 ? database_ : "");
  }
  for (int damage = 0; damage < kRandomDamages / 2; ++damage) {
    SCOPED_TRACE(damage);
    expectRolledBackOrReported(damagedAtRandom(journal_, damage), "");
  }
}

TEST_F(DamageTest, ALogOfAnotherStateIsNotApplied) {
  const TemporaryDirectory directory;
  directory.write(kDatabase, database_);
  const NodePtr root = openTree(storeIn(directory.path()));
  for (int value = 0; value < 3; ++value)
    root->getChild("n0")->setAny("k0", "x" + std::to_string(value), "user");
  const std::string contents = contentsOf(root);
  const struct {
    const char* end;
    const std::string& log;
  } cases[] = {{"-journal", journal_}, {"-wal", log_}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.end);
    const TemporaryDirectory copy;
    copy.write(kDatabase, directory.read(kDatabase));
    copy.write(std::string(kDatabase) + c.end, c.log);
    testing::internal::CaptureStderr();
    EXPECT_EQ(contentsOf(openTree(storeIn(copy.path()))), contents);
    const std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_NE(reports.find("belongs to another database"), std::string::npos) << reports;
    EXPECT_EQ(filesLike(copy, ".damaged-", c.end), std::vector<std::string>{c.log});
  }
}

}  // namespace
}  // namespace test
