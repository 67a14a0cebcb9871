// The files of a user store: their owners, backups, copies, and a log beside the database.
#include <sys/stat.h>
#include <unistd.h>

#include "host/os/log_error.h"
#include "host/user_store/user_store_stamp.h"
#include "tests/support/user_store_fixture.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

class UserStoreFilesTest : public UserStoreTest {
 protected:
  // Opens a store, checks its contents and returns its reports.
  std::string reportsOfOpening(const std::string& contents) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(contentsOf(open()), contents);
    return testing::internal::GetCapturedStderr();
  }

  // Makes a store that leaves every kind of file, also a damaged database and its copy.
  void makeEveryFile(const std::string& user) {
    const UserStoreFiles files(user, 1);
    { addKey(openTree(storeIn(user)), "k"); }
    std::filesystem::remove(files.backup(1));
    backUpDaily(files, kWait);
    std::filesystem::resize_file(files.database(), 1000);
    testing::internal::CaptureStderr();
    openTree(storeIn(user));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Restored: "), std::string::npos);
  }

  static struct stat statusOf(const std::filesystem::path& file) {
    struct stat status;
    EXPECT_EQ(lstat(file.c_str(), &status), 0) << file;
    return status;
  }

  const TemporaryDirectory& directory_ = directory;
  const UserStoreFiles files_{directory_.path(), 1};
  static constexpr int kWait = 1000;
};

TEST_F(UserStoreFilesTest, TheStampHasTheLastRevisionInWhateverOrderTheyAreNoted) {
  UserStoreStamp stamp(files_.stamp());
  EXPECT_EQ(stamp.last(), 0);
  for (const std::int64_t revision : {1, 64, 63, 65}) stamp.note(revision);
  EXPECT_EQ(stamp.last(), 65);
  UserStoreStamp(files_.stamp()).note(66);
  EXPECT_EQ(stamp.last(), 66);
  stamp.clear();
  EXPECT_EQ(stamp.last(), 0);
}

TEST_F(UserStoreFilesTest, DamagedLinesOfTheStampAreIgnored) {
  UserStoreStamp stamp(files_.stamp());
  for (std::int64_t revision = 1; revision < 5; ++revision) stamp.note(revision);
  const std::string whole = directory_.read("settings-1.stamp");
  for (std::size_t i = 0; i < whole.size(); ++i) {
    for (const int bits : {0x01, 0x08, 0xFF}) {
      std::string damaged = whole;
      damaged[i] = static_cast<char>(damaged[i] ^ bits);
      directory_.write("settings-1.stamp", damaged);
      // The last of the four lines is that of the last revision.
      const std::int64_t last = UserStoreStamp(files_.stamp()).last();
      const std::size_t lastLine = whole.size() - 40;
      EXPECT_TRUE(last == 4 || (i >= lastLine && last == 3)) << i << ' ' << bits;
    }
    directory_.write("settings-1.stamp", whole.substr(0, i));
    EXPECT_LT(UserStoreStamp(files_.stamp()).last(), 4) << i;
  }
}

TEST_F(UserStoreFilesTest, ABackupIsMadeOnceADayAndThreeAreKept) {
  const auto keysIn = [](const std::string& file) {
    return SqliteDatabase(file, SQLITE_OPEN_READONLY, 0).number("SELECT count(*) FROM definitions");
  };
  // An empty store gets none, nor an unfinished one.
  { openTree(storeIn(directory_.path())); }
  backUpDaily(files_, kWait);
  for (const int generation : {0, 1}) {
    EXPECT_FALSE(std::filesystem::exists(files_.backup(generation))) << generation;
  }
  for (int day = 1; day <= 5; ++day) {
    // The braces close the store, and end its thread.
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

TEST_F(UserStoreFilesTest, ABackupDatedInTheFutureIsReplaced) {
  { addKey(open(), "k"); }
  backUpDaily(files_, kWait);
  using Clock = std::filesystem::file_time_type::clock;
  std::filesystem::last_write_time(files_.backup(1), Clock::now() + std::chrono::hours(10000));
  backUpDaily(files_, kWait);
  EXPECT_LT(std::filesystem::last_write_time(files_.backup(1)),
            Clock::now() + std::chrono::hours(1));
}

TEST_F(UserStoreFilesTest, EveryFileIsPrivateFromTheStart) {
  const mode_t before = umask(0);
  makeEveryFile(directory_.file("a/b"));
  umask(before);
  for (const auto& file : std::filesystem::recursive_directory_iterator(directory_.path())) {
    EXPECT_EQ(statusOf(file).st_mode & 0077, 0u) << file;
  }
}

TEST_F(UserStoreFilesTest, FilesMadeByRootBelongToTheOwnerOfTheDirectory) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  constexpr uid_t kOwner = 12345;
  ASSERT_EQ(chown(directory_.path().c_str(), kOwner, kOwner), 0);
  makeEveryFile(directory_.file("a/b"));
  int files = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(directory_.path())) {
    EXPECT_EQ(statusOf(file).st_uid, kOwner) << file;
    ++files;
  }
  EXPECT_GE(files, 7);
}

TEST_F(UserStoreFilesTest, AWorldWritableDirectoryIsRefused) {
  const std::string shared = directory_.file("shared");
  for (const mode_t mode : {0777, 01777}) {
    std::filesystem::create_directory(shared);
    ASSERT_EQ(chmod(shared.c_str(), mode), 0);
    testing::internal::CaptureStderr();
    {
      const NodePtr root = openTree(storeIn(shared));
      EXPECT_THROW(addKey(root, "k"), std::exception);
    }
    EXPECT_NE(testing::internal::GetCapturedStderr().find("chmod o-w \"" + shared),
              std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(shared));
    std::filesystem::remove(shared);
  }
}

TEST_F(UserStoreFilesTest, LinksAreNotFollowed) {
  const std::string target = directory_.write("target", "precious");
  std::filesystem::create_symlink(target, files_.stamp());
  { addKey(open(), "k"); }
  EXPECT_EQ(directory_.read("target"), "precious");
  std::filesystem::remove(files_.lock());
  std::filesystem::create_symlink(target, files_.lock());
  EXPECT_NE(reportsOfOpening("k key\n").find("is a link"), std::string::npos);
  EXPECT_EQ(directory_.read("target"), "precious");
}

TEST_F(UserStoreFilesTest, ACopyOfTheDatabaseFileAloneHasEverything) {
  const NodePtr root = open();
  addKey(root, "k");
  for (int value = 0; value < 5; ++value) {
    root->setAny("k", value, "user");
    const TemporaryDirectory copy;
    copy.write("settings-1.db", directory_.read("settings-1.db"));
    EXPECT_EQ(contentsOf(openTree(storeIn(copy.path()))), contentsOf(root));
  }
  EXPECT_FALSE(std::filesystem::exists(files_.wal()));
  EXPECT_FALSE(std::filesystem::exists(files_.sharedMemory()));
}

TEST_F(UserStoreFilesTest, TheLogOfAnEarlierVersionIsUsedWhileThatRunsAndThenRemoved) {
  { addKey(open(), "k"); }
  auto earlier = shell();
  earlier->execute(
      "PRAGMA journal_mode=WAL; DROP TABLE store; PRAGMA application_id=0; BEGIN;"
      "INSERT INTO settings VALUES('k', 'int', '1'); INSERT INTO journal(changes) VALUES('=k');"
      "COMMIT");
  const NodePtr root = open();
  EXPECT_EQ(contentsOf(root), "k key\nk = int 1\n");
  root->setAny("k", 2, "user");
  EXPECT_EQ(earlier->text("SELECT value FROM settings"), "2");
  earlier.reset();
  EXPECT_TRUE(eventually([&] { return !std::filesystem::exists(files_.wal()); }));
  EXPECT_TRUE(canEventuallySetK(root));
  const TemporaryDirectory copy;
  copy.write("settings-1.db", directory_.read("settings-1.db"));
  EXPECT_EQ(contentsOf(openTree(storeIn(copy.path()))), "k key\nk = int 1\n");
}

TEST_F(UserStoreFilesTest, AMissingOrEmptyDatabaseIsRestoredAndItsLogKept) {
  { addKey(open(), "k"); }
  std::filesystem::remove(files_.backup(1));
  backUpDaily(files_, kWait);
  for (const char* database : {"missing", "empty"}) {
    for (const char* suffix : {"-journal", "-wal"}) {
      SCOPED_TRACE(std::string(database) + suffix);
      std::filesystem::remove(files_.database());
      if (database == std::string("empty")) directory_.write("settings-1.db", "");
      directory_.write(std::string("settings-1.db") + suffix, "a log that was not applied");
      const std::string reports = reportsOfOpening("k key\n");
      EXPECT_NE(reports.find("Restored: the state of"), std::string::npos) << reports;
      EXPECT_EQ(std::count(reports.begin(), reports.end(), '\n'), 1) << reports;
      int kept = 0;
      for (const auto& file : std::filesystem::directory_iterator(directory_.path())) {
        const std::string name = file.path().filename();
        if (name.find(".damaged-") == std::string::npos) continue;
        kept += directory_.read(name) == "a log that was not applied";
        std::filesystem::remove(file);
      }
      EXPECT_EQ(kept, 1);
    }
  }
}

TEST_F(UserStoreFilesTest, AReportIsOneLineWithControlCharactersEscaped) {
  testing::internal::CaptureStderr();
  logError("a\nb \x1B[2J \xC0\x80 \xC2\x9B caf\xC3\xA9");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "a\\nb \\u001b[2J \\u0000 \\u009b caf\xC3\xA9\n");
}

}  // namespace
}  // namespace test
