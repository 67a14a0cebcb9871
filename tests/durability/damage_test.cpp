// Files with flipped bytes and cut tails: the store opens, restores or reports; it does not crash,
// and what it held does not vanish without a word.
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

constexpr char kDatabase[] = "settings-1.db";
constexpr char kLog[] = "settings-1.db-wal";
constexpr int kPlaces = 150;

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
  }

  // Opens a store on such files and gives what it has and what it says.
  static std::pair<std::string, std::string> open(const std::string& database,
                                                  const std::string& log,
                                                  const std::string& backup = "") {
    const TemporaryDirectory directory;
    directory.write(kDatabase, database);
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

  std::string contents_, checkpointed_, log_;
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

TEST_F(DamageTest, ADamagedLogGivesAStateThatOnceWas) {
  ASSERT_GT(log_.size(), 1000u);
  const std::string late = open(checkpointed_, log_).first;
  EXPECT_NE(late.find("n0.k1 = string later"), std::string::npos);
  for (int place = 0; place < kPlaces; ++place) {
    const std::size_t at = place < 50 ? place * 2 : (place - 50) * log_.size() / 100;
    std::string damaged = log_;
    damaged[at] = static_cast<char>(damaged[at] ^ 0xFF);
    for (const std::string& log : {damaged, log_.substr(0, at)}) {
      const std::string found = open(checkpointed_, log).first;
      EXPECT_EQ(lines(found), lines(contents_)) << "at " << at;
      EXPECT_TRUE(found.find("k1 = string later") == std::string::npos ||
                  found.find("k0 = string late\n") != std::string::npos)
          << "at " << at;
    }
  }
}

}  // namespace
}  // namespace test
