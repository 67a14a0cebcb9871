// Files with flipped bytes and cut tails: the store opens, restores or reports; it does not crash,
// and what it held does not vanish without a word.
#include <random>

#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

constexpr char kDatabase[] = "settings-1.db";
constexpr char kLog[] = "settings-1.db-wal";
constexpr char kStamp[] = "settings-1.stamp";
constexpr int kPlaces = 150;
constexpr int kWildDamages = 200;

class DamageTest : public testing::Test {
 protected:
  // The files of a store with content, once with everything in the database and once, as a killed
  // process leaves them, with the last changes in the log.
  DamageTest() {
    const TemporaryDirectory directory;
    {
      const NodePtr root = openTree(storeIn(directory.path()));
      for (int node = 0; node < 10; ++node) {
        const SettingsPtr parent = addNode(root, "n" + std::to_string(node));
        for (int key = 0; key < 20; ++key) {
          addKey(parent, "k" + std::to_string(key));
          parent->setAny("k" + std::to_string(key), std::string(50, 'v'), "user");
        }
      }
      contents_ = contentsOf(root);
    }
    checkpointed_ = directory.read(kDatabase);
    const NodePtr root = openTree(storeIn(directory.path()));
    root->getChild("n0")->setAny("k0", std::string("late"), "user");
    root->getChild("n0")->setAny("k1", std::string("later"), "user");
    log_ = directory.read(kLog);
    stamp_ = directory.read(kStamp);
  }

  // Opens a store on such files and gives what it has and what it says.
  std::pair<std::string, std::string> open(const std::string& database, const std::string& log,
                                           const std::string& backup = "") {
    const TemporaryDirectory directory;
    directory.write(kDatabase, database);
    directory.write(kStamp, log.empty() ? "" : stamp_);
    if (!log.empty()) directory.write(kLog, log);
    if (!backup.empty()) directory.write(std::string(kDatabase) + ".backup-1", backup);
    testing::internal::CaptureStderr();
    std::string contents;
    {
      const NodePtr root = openTree(storeIn(directory.path()));
      contents = contentsOf(root);
      try {
        addKey(root, "new");
      } catch (const std::exception&) {
        // A store that cannot be opened has said so.
      }
    }
    return {contents, testing::internal::GetCapturedStderr()};
  }

  static std::size_t lines(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
  }

  // Opens a store on such a log and checks that it has a state that once was, and says what it
  // lacks and where the log is kept.
  void expectLogOpens(const std::string& log) {
    const TemporaryDirectory directory;
    directory.write(kDatabase, checkpointed_);
    directory.write(kLog, log);
    directory.write(kStamp, stamp_);
    testing::internal::CaptureStderr();
    const std::string found = contentsOf(openTree(storeIn(directory.path())));
    const std::string said = testing::internal::GetCapturedStderr();
    const bool hasFirst = found.find("k0 = string late\n") != std::string::npos;
    const bool hasSecond = found.find("k1 = string later\n") != std::string::npos;
    EXPECT_EQ(lines(found), lines(contents_));
    EXPECT_TRUE(hasFirst || !hasSecond);
    const std::string lost = hasSecond  ? ""
                             : hasFirst ? "Lost: the last transaction."
                                        : "Lost: the last 2 transactions.";
    EXPECT_EQ(lines(said), hasSecond ? 0 : 1) << said;
    EXPECT_NE(said.find(lost), std::string::npos) << said;
    if (hasSecond) return;
    std::string kept;
    for (const auto& file : std::filesystem::directory_iterator(directory.path())) {
      const std::string name = file.path().filename();
      if (name.find(".damaged-") != std::string::npos && name.rfind("-wal") == name.size() - 4) {
        kept = directory.read(name);
        EXPECT_NE(said.find(name.substr(0, name.size() - 4)), std::string::npos) << said;
      }
    }
    EXPECT_EQ(kept, log);
    // It is said once.
    testing::internal::CaptureStderr();
    EXPECT_EQ(contentsOf(openTree(storeIn(directory.path()))), found);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }

  std::string contents_, checkpointed_, log_, stamp_;
};

TEST_F(DamageTest, AFlippedByteOfTheDatabaseLosesLittleOrIsReported) {
  for (int place = 0; place < kPlaces; ++place) {
    // The first places in the header, the others all over the file.
    const std::size_t at = place < 50 ? place * 2 : (place - 50) * checkpointed_.size() / 100;
    std::string damaged = checkpointed_;
    damaged[at] = static_cast<char>(damaged[at] ^ 0xFF);
    const auto [found, said] = open(damaged, "");
    EXPECT_TRUE(lines(found) + 1 >= lines(contents_) || !said.empty()) << "at " << at;
  }
}

TEST_F(DamageTest, WithABackupADamagedDatabaseKeepsEverythingThatTheBackupHas) {
  for (int place = 0; place <= 20; ++place) {
    const std::string cut = checkpointed_.substr(0, place * checkpointed_.size() / 21);
    const auto [found, said] = open(cut, "", checkpointed_);
    EXPECT_EQ(found, contents_) << "cut at " << cut.size();
    EXPECT_NE(said.find("Restored: the state of"), std::string::npos) << said;
    EXPECT_NE(said.find(".damaged-"), std::string::npos) << said;
  }
}

TEST_F(DamageTest, ACutDatabaseWithoutABackupIsReported) {
  for (int place = 1; place <= 20; ++place) {
    const auto [found, said] = open(checkpointed_.substr(0, place * checkpointed_.size() / 21), "");
    EXPECT_NE(said.find("There is no backup"), std::string::npos) << place << said;
  }
}

TEST_F(DamageTest, ADatabaseThatLacksPartOfItsSchemaKeepsWhatCanBeRead) {
  const struct {
    const char* damage;
    const char* said;
    bool keepsValues;
  } cases[] = {{"PRAGMA user_version=0", "nothing is lost", true},
               {"DROP TABLE journal", "There is no backup", true},
               {"DROP TABLE settings", "There is no backup", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.damage);
    const TemporaryDirectory directory;
    const std::string file = directory.write(kDatabase, checkpointed_);
    SqliteDatabase(file, SQLITE_OPEN_READWRITE, 0)
        .execute((std::string(c.damage) + "; PRAGMA journal_mode=DELETE").c_str());
    const auto [found, said] = open(directory.read(kDatabase), "");
    EXPECT_NE(said.find(c.said), std::string::npos) << said;
    // Of 200 keys and 10 nodes.
    EXPECT_EQ(lines(found), c.keepsValues ? lines(contents_) : 210u);
  }
}

TEST_F(DamageTest, ADamagedLogGivesAStateThatOnceWasAndWhatItLacksIsSaid) {
  ASSERT_GT(log_.size(), 1000u);
  expectLogOpens(log_);
  for (int place = 0; place < kPlaces; ++place) {
    const std::size_t at = place < 50 ? place * 2 : (place - 50) * log_.size() / 100;
    SCOPED_TRACE("at " + std::to_string(at));
    std::string damaged = log_;
    damaged[at] = static_cast<char>(damaged[at] ^ 0xFF);
    expectLogOpens(damaged);
    if (at > 0) expectLogOpens(log_.substr(0, at));
  }
}

TEST_F(DamageTest, WhateverStandsInTheLogTheStoreOpens) {
  std::mt19937 random(1);
  for (int damage = 0; damage < kWildDamages; ++damage) {
    SCOPED_TRACE(damage);
    std::string log = log_;
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
    expectLogOpens(log);
  }
}

}  // namespace
}  // namespace test
