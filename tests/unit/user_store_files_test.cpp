// The files beside the database of a user store: its stamp and its backups.
#include "host/settings/user_store_stamp.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

class UserStoreFilesTest : public testing::Test {
 protected:
  const TemporaryDirectory directory_;
  const UserStoreFiles files_{directory_.path(), 1};
  static constexpr int kWait = 1000;
};

TEST_F(UserStoreFilesTest, TheStampKnowsTheLastTransactionInWhateverOrderTheyAreNoted) {
  UserStoreStamp stamp(files_.stamp());
  EXPECT_EQ(stamp.last(), 0);
  for (const std::int64_t transaction : {1, 64, 63, 65}) stamp.note(transaction);
  EXPECT_EQ(stamp.last(), 65);
  UserStoreStamp(files_.stamp()).note(66);
  EXPECT_EQ(stamp.last(), 66);
  stamp.clear();
  EXPECT_EQ(stamp.last(), 0);
}

TEST_F(UserStoreFilesTest, OfADamagedStampTheLinesThatAreInOrderCount) {
  UserStoreStamp stamp(files_.stamp());
  for (std::int64_t transaction = 1; transaction < 5; ++transaction) stamp.note(transaction);
  const std::string whole = directory_.read("settings-1.stamp");
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int bits : {0x01, 0x08, 0xFF}) {
      std::string damaged = whole;
      damaged[at] = static_cast<char>(damaged[at] ^ bits);
      directory_.write("settings-1.stamp", damaged);
      // The last of the four lines is that of the last transaction.
      const std::int64_t last = UserStoreStamp(files_.stamp()).last();
      const std::size_t lastLine = whole.size() - 40;
      EXPECT_TRUE(last == 4 || (at >= lastLine && last == 3)) << at << ' ' << bits;
    }
    directory_.write("settings-1.stamp", whole.substr(0, at));
    EXPECT_LT(UserStoreStamp(files_.stamp()).last(), 4) << at;
  }
}

TEST_F(UserStoreFilesTest, ABackupIsMadeOnceADayAndThreeAreKept) {
  const auto keysIn = [](const std::string& file) {
    return SqliteDatabase(file, SQLITE_OPEN_READONLY, 0).number("SELECT count(*) FROM definitions");
  };
  for (int day = 1; day <= 5; ++day) {
    // The store is closed again, and its thread with it.
    { addKey(openTree(storeIn(directory_.path())), "k" + std::to_string(day)); }
    backUpDaily(files_, kWait);
    std::filesystem::last_write_time(
        files_.backup(1), std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
    backUpDaily(files_, kWait);
    EXPECT_EQ(keysIn(files_.backup(1)), day);
    // The next one is not due.
    { addKey(openTree(storeIn(directory_.path())), "late" + std::to_string(day)); }
    backUpDaily(files_, kWait);
    EXPECT_EQ(keysIn(files_.backup(1)), day);
    { openTree(storeIn(directory_.path()))->removeKey("late" + std::to_string(day)); }
  }
  EXPECT_EQ(keysIn(files_.backup(2)), 4);
  EXPECT_EQ(keysIn(files_.backup(3)), 3);
  EXPECT_FALSE(std::filesystem::exists(files_.backup(4)));
}

}  // namespace
}  // namespace test
