// Makes every system call of an operation fail in turn: the operation succeeds or reports why not,
// and the tree equals one that is opened afterwards, both beside the running store and after a
// crash of its process. Also lets another process restore the store at every such call.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "host/change/external_changes.h"
#include "host/user_store/user_store_recovery.h"
#include "tests/durability/failing_system.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

class FaultTest : public testing::TestWithParam<int> {
 protected:
  // Copies the files of a store as a process leaves them that crashes now.
  static void copyFiles(const std::string& from, const std::string& to) {
    std::filesystem::create_directories(to);
    for (const char* name : {"/settings-1.db", "/settings-1.db-journal", "/settings-1.stamp"}) {
      if (std::filesystem::exists(from + name)) {
        std::filesystem::copy_file(from + name, to + name);
      }
    }
  }

  static std::string afterACrash(const TemporaryDirectory& directory) {
    const TemporaryDirectory copy;
    copyFiles(directory.path(), copy.path());
    testing::internal::CaptureStderr();
    const std::string contents = contentsOf(openTree(storeIn(copy.path())));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    return contents;
  }
};

TEST_P(FaultTest, AChangeSucceedsOrChangesNothing) {
  const TemporaryDirectory directory;
  const NodePtr root = openTree(storeIn(directory.path(), 50));
  const SettingsPtr node = addNode(root, "n");
  SettingsValues values;
  for (int key = 0; key < 200; ++key) {
    values.emplace_back(addKey(node, "k" + std::to_string(key)), std::string(300, 'x'));
  }
  addKey(root, "single");
  int value = 0, failed = 0;
  const std::function<void()> changes[] = {
      [&] { root->setAny("single", ++value, "user"); },
      [&] {
        for (auto& pair : values) pair.second = std::string(300, 'a' + ++value % 26);
        if (!setAll(root, values, "user").empty()) throw std::runtime_error("refused");
      },
      [&] { root->copySubtree(node, "copy" + std::to_string(++value)); },
      [&] { root->unset("single", "user"); }};
  for (const auto& change : changes) {
    for (int n = 1;; ++n) {
      if (!root->isSet("single", "user")) root->setAny("single", 0, "user");
      const std::string before = contentsOf(root);
      failOn(n, GetParam());
      bool refused = false;
      try {
        change();
      } catch (const std::exception&) {
        refused = true;
      }
      const bool over = !hasCome();
      std::set<std::string> unflushed = unflushedFiles();
      unflushed.erase("settings-1.stamp");  // is never flushed
      failOn(0, 0);
      failed += refused;
      const std::string now = contentsOf(root);
      if (refused) {
        ASSERT_EQ(now, before) << "call " << n;
      } else {
        ASSERT_EQ(unflushed, std::set<std::string>()) << "call " << n;
      }
      ASSERT_EQ(contentsOf(openTree(storeIn(directory.path()))), now) << "call " << n;
      ASSERT_EQ(afterACrash(directory), now) << "call " << n;
      if (over) break;
    }
  }
  EXPECT_GT(failed, 4);
}

TEST_P(FaultTest, AFaultWhileOpeningHidesNoValueAndIsReportedByWriting) {
  int unopened = 0;
  for (int n = 1;; ++n) {
    const TemporaryDirectory directory;
    const std::string user = directory.file("a/user");
    {
      NodePtr root = openTree(storeIn(user));
      addKey(root, "k");
      root->setAny("k", 1, "user");
      // As a killed process leaves it, with its journal.
      const TemporaryDirectory kept;
      copyFiles(user, kept.file("user"));
      root.reset();
      std::filesystem::remove_all(user);
      copyFiles(kept.file("user"), user);
    }
    testing::internal::CaptureStderr();
    failOn(n, GetParam());
    const auto store = std::make_shared<UserStore>(storeIn(user, 50));
    const TreePtr tree = Tree::makeStandalone();
    const auto root = boost::make_shared<Node>(tree, "r", true, ValidatorPtr());
    store->readAll(*root, kUser);
    const bool over = !hasCome();
    failOn(0, 0);
    const std::string reports = testing::internal::GetCapturedStderr();
    ASSERT_EQ(contentsOf(root), "k key\nk = int 1\n") << "call " << n << ": " << reports;
    try {
      store->apply({PutValue{"k", 2}}, hearNothing());
    } catch (const Failure<StoreFailure>& failure) {
      ++unopened;
      const std::string prefix = "Cannot write " + user + "/settings-1.db: ";
      EXPECT_EQ(failure.GetMessageTxt().find(prefix), 0u) << failure.GetMessageTxt();
      EXPECT_GT(failure.GetMessageTxt().size(), prefix.size());
      EXPECT_NE(reports.find("cannot be stored"), std::string::npos) << reports;
    }
    if (over) break;
  }
  EXPECT_GT(unopened, 2);
}

TEST_P(FaultTest, AStoreThatCouldNotBeMadeIsMadeLater) {
  int failed = 0;
  for (int n = 1;; ++n) {
    const TemporaryDirectory directory;
    testing::internal::CaptureStderr();
    failOn(n, GetParam());
    const auto store = std::make_shared<UserStore>(storeIn(directory.file("a/user"), 50));
    const TreePtr tree = Tree::makeStandalone();
    store->readAll(*boost::make_shared<Node>(tree, "r", true, ValidatorPtr()), kUser);
    const bool over = !hasCome();
    failOn(0, 0);
    failed += !testing::internal::GetCapturedStderr().empty();
    testing::internal::CaptureStderr();
    const NodePtr root = openTree(storeIn(directory.file("a/user")));
    addKey(root, "k");
    EXPECT_EQ(contentsOf(openTree(storeIn(directory.file("a/user")))), "k key\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "call " << n;
    if (over) break;
  }
  EXPECT_GT(failed, 4);
}

TEST_P(FaultTest, ADamagedStoreIsRestoredAndReportedDespiteAFault) {
  const TemporaryDirectory files;
  {
    const NodePtr root = openTree(storeIn(files.path()));
    addKey(root, "k");
    root->setAny("k", 1, "user");
  }
  const std::string whole = files.read("settings-1.db");
  SqliteDatabase(files.file("settings-1.db"), SQLITE_OPEN_READWRITE, 0)
      .execute("PRAGMA user_version=0; PRAGMA journal_mode=DELETE");
  const struct {
    std::string database, backup;
    const char* report;
  } cases[] = {{whole.substr(0, whole.size() / 2), whole, "Restored: the state of"},
               {files.read("settings-1.db"), "", "nothing is lost"}};
  for (const auto& c : cases) {
    for (int n = 1;; ++n) {
      SCOPED_TRACE(c.report + (" call " + std::to_string(n)));
      const TemporaryDirectory directory;
      directory.write("settings-1.db", c.database);
      if (!c.backup.empty()) directory.write("settings-1.db.backup-1", c.backup);
      testing::internal::CaptureStderr();
      failOn(n, GetParam());
      const auto store = std::make_shared<UserStore>(storeIn(directory.path(), 50));
      const TreePtr tree = Tree::makeStandalone();
      store->readAll(*boost::make_shared<Node>(tree, "r", true, ValidatorPtr()), kUser);
      const bool over = !hasCome();
      failOn(0, 0);
      // Restored now, or at the latest when nothing fails any more.
      EXPECT_EQ(contentsOf(openTree(storeIn(directory.path()))), "k key\nk = int 1\n");
      const std::string reports = testing::internal::GetCapturedStderr();
      EXPECT_NE(reports.find(c.report), std::string::npos) << reports;
      // There is one copy of the damaged database, however often restoring was tried.
      int kept = 0;
      for (const auto& file : std::filesystem::directory_iterator(directory.path())) {
        const std::string name = file.path().filename();
        kept += name.find(".damaged-") != name.npos && name.find("-journal") == name.npos;
      }
      EXPECT_EQ(kept, 1);
      if (over) break;
    }
  }
}

TEST(ThreadLimitTest, AStoreWithoutAThreadIsUsedUnwatched) {
  const TemporaryDirectory directory;
  const auto store = std::make_shared<UserStore>(storeIn(directory.path()));
  const TreePtr tree = Tree::makeStandalone();
  store->readAll(*boost::make_shared<Node>(tree, "r", true, ValidatorPtr()), kUser);
  sigset_t before, after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  testing::internal::CaptureStderr();
  failOn(1, EAGAIN);
  EXPECT_FALSE(store->watch([] { ADD_FAILURE() << "nothing can call"; }));
  EXPECT_TRUE(hasCome());
  failOn(0, 0);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("settings-1.stamp is not watched: "),
            std::string::npos);
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (int signal = 1; signal < NSIG; ++signal) {
    EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
  }
  store->apply({DefineEntry{"k", true, 0, {}}}, hearNothing());
  EXPECT_EQ(contentsOf(openTree(storeIn(directory.path()))), "k key\n");
}

TEST(ThreadLimitTest, WithoutThreadsReadingDeliversExternalChanges) {
  const TemporaryDirectory directory;
  const NodePtr other = openTree(storeIn(directory.path()));
  addKey(other, "k");
  const NodePtr root = openUnwatched(storeIn(directory.path()));
  testing::internal::CaptureStderr();
  failOn(1, EAGAIN);
  EXPECT_FALSE(root->tree().store(kUser).watch([&] { catchUp(root->tree(), kUser); }));
  testing::internal::GetCapturedStderr();
  root->tree().setMustLook();
  Listener listener(root);
  other->setAny("k", 1, "user");
  failThreadOn(1, EAGAIN);
  EXPECT_EQ(intAt(root, "k"), 1);
  EXPECT_TRUE(hasCome()) << "no thread was started to deliver the events";
  failOn(0, 0);
  EXPECT_EQ(listener.heard(), Names{"changed k"});
}

// One process changes a key while another one restores the store.
class RestoringTest : public testing::Test {
 protected:
  RestoringTest() : store_(options_) {
    store_.readAll(*boost::make_shared<Node>(Tree::makeStandalone(), "r", true, ValidatorPtr()),
                   kUser);
    store_.apply({DefineEntry{"k", true, 0, {}}}, hearNothing());
    testing::internal::CaptureStderr();
  }
  ~RestoringTest() override { testing::internal::GetCapturedStderr(); }

  void change(int value) {
    try {
      store_.apply({PutValue{"k", value}}, hearNothing());
      acknowledged_ = "k = int " + std::to_string(value) + "\n";
    } catch (const Failure<StoreFailure>&) {
    }
  }
  void restore() {
    try {
      const UserStoreFiles files(options_.directory, options_.context);
      const UserStoreLock lock(files, UserStoreLock::kExclusive, 0);
      UserStoreStamp stamp(files.stamp());
      CopyAside copy(files);
      restoreUserStore(files, copy, stamp, "planted damage", lock.identity());
    } catch (const SqliteError&) {
    }
  }
  void expectAcknowledged() const {
    EXPECT_EQ(contentsOf(openTree(options_)), "k key\n" + acknowledged_);
  }

 private:
  const TemporaryDirectory directory_;
  const UserStoreOptions options_ = storeIn(directory_.path(), 50);
  UserStore store_;
  std::string acknowledged_;
};

TEST_F(RestoringTest, KeepsAChangeThatItInterrupts) {
  const std::function<void()> interruption = [this] { restore(); };
  for (int n = 1;; ++n) {
    SCOPED_TRACE(n);
    interruptOn(n, interruption);
    change(n);
    const bool over = !hasCome();
    failOn(0, 0);
    expectAcknowledged();
    if (over) break;
  }
}

TEST_F(RestoringTest, KeepsConcurrentChanges) {
  std::atomic<bool> over{false};
  std::thread changing([&] {
    for (int value = 1; !over; ++value) change(value);
  });
  for (int times = 0; times < 20; ++times) restore();
  over = true;
  changing.join();
  expectAcknowledged();
}

// Another process, forked before this one has a store, which opens the store when told to.
class OtherProcess {
 public:
  explicit OtherProcess(const UserStoreOptions& options) {
    if (pipe(toIt_) != 0 || pipe(fromIt_) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ != 0) return;
    if (!freopen("/dev/null", "w", stderr)) _exit(1);
    for (char word; read(toIt_[0], &word, 1) == 1;) {
      openTree(options);
      if (write(fromIt_[1], &word, 1) != 1) break;
    }
    _exit(0);
  }
  ~OtherProcess() {
    for (const int end : {toIt_[0], toIt_[1], fromIt_[0], fromIt_[1]}) close(end);
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  void look() const {
    char word = 'x';
    if (write(toIt_[1], &word, 1) != 1 || read(fromIt_[0], &word, 1) != 1) std::abort();
  }

 private:
  int toIt_[2], fromIt_[2];
  pid_t process_;
};

TEST(CopyingTest, CopyingTheDatabaseDropsNoLockThatACommitNeeds) {
  const TemporaryDirectory directory;
  const OtherProcess process(storeIn(directory.path(), 5));
  const NodePtr root = openTree(storeIn(directory.path()));
  const SettingsPtr one = addKey(root, "one"), other = addKey(root, "other");
  root->copySubtree(root, "far");
  const std::function<void()> interruption = [&] {
    directory.read("settings-1.db");
    process.look();
  };
  for (int n = 1;; ++n) {
    SCOPED_TRACE(n);
    interruptOn(n, interruption);
    EXPECT_TRUE(setAll(root, {{one, n}, {other, n}}, "user").empty());
    const bool over = !hasCome();
    failOn(0, 0);
    EXPECT_EQ(contentsOf(openTree(storeIn(directory.path()))), contentsOf(root));
    if (over) break;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Errors, FaultTest, testing::Values(ENOSPC, EIO, EACCES), [](const auto& info) {
      return std::string(info.param == ENOSPC ? "ENOSPC" : info.param == EIO ? "EIO" : "EACCES");
    });

}  // namespace
}  // namespace test
