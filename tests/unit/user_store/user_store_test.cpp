// Failures of the user store, and two trees on one store, as two processes have them.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <atomic>

#include "host/change/external_changes.h"
#include "tests/support/user_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings::host;

TEST_F(UserStoreTest, ADatabaseOfANewerVersionIsRefusedAndNotChanged) {
  { addKey(open(), "k"); }
  shell()->execute("PRAGMA user_version=3");
  testing::internal::CaptureStderr();
  const NodePtr root = open();
  EXPECT_NE(testing::internal::GetCapturedStderr().find("newer version (schema 3"),
            std::string::npos);
  const std::string message = messageOf<StoreFailure>([&] { addKey(root, "new"); });
  EXPECT_NE(message.find(database()), std::string::npos) << message;
  EXPECT_NE(message.find("newer version"), std::string::npos) << message;
  EXPECT_EQ(shell()->number("SELECT count(*) FROM definitions"), 1);
}

TEST_F(UserStoreTest, LimitsOfTheDatabaseAreReported) {
  testing::internal::CaptureStderr();
  const NodePtr far = openTree(storeIn(directory.file(
      std::string(200, 'a') + '/' + std::string(200, 'b') + '/' + std::string(200, 'c'))));
  EXPECT_NE(testing::internal::GetCapturedStderr().find("SQLite takes no more than 504"),
            std::string::npos);
  EXPECT_NE(messageOf<StoreFailure>([&] { addKey(far, "k"); }).find("a shorter directory"),
            std::string::npos);
  addKey(open(), "k");
  const auto small = shell();
  sqlite3_limit(small->handle(), SQLITE_LIMIT_LENGTH, 1000);
  try {
    SqliteStatement(*small, "SELECT ?1").bindText(1, std::string(1001, 'x'));
    FAIL() << "taken";
  } catch (const SqliteError& error) {
    EXPECT_NE(std::string(error.what()).find("larger than"), std::string::npos) << error.what();
  }
}

TEST_F(UserStoreTest, ADirectoryThatCannotBeMadeIsReportedByEveryWrite) {
  directory.write("file", "");
  testing::internal::CaptureStderr();
  const NodePtr root = openTree(storeIn(directory.file("file/user")));
  EXPECT_NE(testing::internal::GetCapturedStderr().find("Not a directory"), std::string::npos);
  const std::string message = messageOf<StoreFailure>([&] { addKey(root, "k"); });
  EXPECT_NE(message.find("Not a directory"), std::string::npos) << message;
  EXPECT_TRUE(root->getChildren().empty());
}

TEST_F(UserStoreTest, ALockedStoreIsReadAndOpenedLater) {
  addKey(open(), "k");
  const FileDescriptor lock(::open(directory.file("settings-1.lock").c_str(), O_RDWR));
  ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
  testing::internal::CaptureStderr();
  const NodePtr root = openTree(storeIn(directory.path(), 20));
  EXPECT_NE(testing::internal::GetCapturedStderr().find("locked"), std::string::npos);
  EXPECT_EQ(contentsOf(root), "k key\n");
  EXPECT_NE(messageOf<StoreFailure>([&] { root->setAny("k", 1, "user"); }).find("locked"),
            std::string::npos);
  flock(lock.get(), LOCK_UN);
  EXPECT_TRUE(canEventuallySetK(root));
  EXPECT_EQ(contentsOf(open()), "k key\nk = int 1\n");
}

TEST_F(UserStoreTest, AWriteTransactionOfAnotherProgramIsWaitedForThenReported) {
  const NodePtr root = openTree(storeIn(directory.path(), 20));
  addKey(root, "k");
  const auto other = shell();
  other->execute("BEGIN IMMEDIATE");
  EXPECT_NE(messageOf<StoreFailure>([&] {
              root->setAny("k", 1, "user");
            }).find("locked for 20 ms (SETTINGS_LOCK_WAIT"),
            std::string::npos);
  EXPECT_EQ(contentsOf(root), "k key\n");
  other->execute("ROLLBACK");
  root->setAny("k", 1, "user");
}

TEST_F(UserStoreTest, TwoTreesSeeEachOthersChanges) {
  const NodePtr first = open();
  const NodePtr second = open();
  Listener listener(second);
  const SettingsPtr node = addNode(first, "n");
  addKey(node, "k");
  node->setAny("k", 1, "user");
  ASSERT_TRUE(eventually([&] { return contentsOf(second) == contentsOf(first); }));
  second->getChild("n")->setAny("k", 2, "user");
  ASSERT_TRUE(eventually([&] { return intAt(node, "k") == 2; }));
  node->unset("k", "user");
  ASSERT_TRUE(eventually([&] { return intAt(second->getChild("n"), "k") == -1; }));
  node->setAny("k", 2, "user");
  first->copySubtree(node, "copy");
  first->removeNode("n");
  ASSERT_TRUE(eventually([&] { return contentsOf(second) == contentsOf(first); }));
  EXPECT_EQ(contentsOf(open()), "copy node\ncopy.k key\ncopy.k = int 2\n");
}

TEST_F(UserStoreTest, RowsThatAreNotUnderstoodAreLeftOutAndReported) {
  testing::internal::CaptureStderr();
  NodePtr root = open();
  addKey(root, "k");
  addKey(root, "last");
  root->setAny("k", 1, "user");
  shell()->execute(
      "BEGIN; INSERT INTO definitions VALUES('odd', 'key', NULL, 'perl', 'x', 'y');"
      "INSERT INTO definitions VALUES('thing', 'thing', NULL, NULL, NULL, NULL);"
      "UPDATE settings SET value = 'seven';"
      "INSERT INTO settings VALUES('last', 'int', '7');"
      "INSERT INTO journal(changes) VALUES('+odd' || char(10) || '+thing' || char(10) || '=k'"
      " || char(10) || '=last' || char(10)); COMMIT");
  EXPECT_TRUE(eventually([&] { return intAt(root, "last") == 7; }));
  EXPECT_EQ(contentsOf(root), "k key\nk = int 1\nlast key\nlast = int 7\n");
  const std::string onChange = testing::internal::GetCapturedStderr();
  testing::internal::CaptureStderr();
  EXPECT_EQ(contentsOf(open()), "k key\nlast key\nlast = int 7\n");
  const std::string onOpening = testing::internal::GetCapturedStderr();
  for (const char* path : {"odd", "thing", "k"}) {
    const std::string line = database() + ": \"" + path + "\" is left out: ";
    EXPECT_NE(onChange.find(line), std::string::npos) << onChange;
    EXPECT_NE(onOpening.find(line), std::string::npos) << onOpening;
  }
}

TEST_F(UserStoreTest, ADatabaseThatIsUnreadableForAWhileIsReadLater) {
  const NodePtr root = open();
  addKey(root, "k");
  root->setAny("k", 1, "user");
  testing::internal::CaptureStderr();
  shell()->execute(
      "BEGIN; ALTER TABLE settings RENAME TO away;"
      "INSERT INTO journal(changes) VALUES('=k'); COMMIT");
  // The tree keeps its values.
  messageOf<StoreFailure>([&] { root->setAny("k", 3, "user"); });
  EXPECT_EQ(intAt(root, "k"), 1);
  shell()->execute(
      "BEGIN; ALTER TABLE away RENAME TO settings; UPDATE settings SET value = '2';"
      "INSERT INTO journal(changes) VALUES('=k'); COMMIT");
  EXPECT_TRUE(eventually([&] { return intAt(root, "k") == 2; }));
  root->setAny("k", 3, "user");
  testing::internal::GetCapturedStderr();  // has a report if the thread has tried to read
  EXPECT_EQ(contentsOf(open()), "k key\nk = int 3\n");
}

TEST_F(UserStoreTest, AnotherDirectoryOrDatabaseIsNotTakenForTheStore) {
  const std::string user = directory.file("user"), away = directory.file("away");
  const NodePtr root = openTree(storeIn(user));
  addKey(root, "k");
  // Another store, which will replace it.
  const std::string other = directory.file("other");
  addKey(openTree(storeIn(other)), "other");
  const auto refusal = [&] {
    return messageOf<StoreFailure>([&] { root->setAny("k", 1, "user"); });
  };
  const auto exchange = [](const std::string& from, const std::string& to) {
    if (std::filesystem::exists(from)) std::filesystem::rename(from, to);
  };
  const struct {
    const char* name;
    const char* reason;
    std::function<void()> takeAway, putBack;
  } cases[] = {{"a bare directory", "not mounted",
                [&] {
                  exchange(user, away);
                  std::filesystem::create_directory(user);
                },
                [&] {
                  EXPECT_TRUE(std::filesystem::is_empty(user)) << "something was made there";
                  std::filesystem::remove(user);
                  exchange(away, user);
                }},
               {"no database", "has been removed", [&] { exchange(user + "/settings-1.db", away); },
                [&] {
                  EXPECT_FALSE(std::filesystem::exists(user + "/settings-1.db"));
                  exchange(away, user + "/settings-1.db");
                }},
               {"another database", "another database",
                [&] {
                  exchange(user + "/settings-1.db", away);
                  exchange(other + "/settings-1.db", user + "/settings-1.db");
                },
                [&] {
                  exchange(user + "/settings-1.db", other + "/settings-1.db");
                  exchange(away, user + "/settings-1.db");
                }}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    c.takeAway();
    EXPECT_TRUE(eventually([&] { return refusal().find(c.reason) != std::string::npos; }))
        << refusal();
    EXPECT_TRUE(root->getChild("k"));
    EXPECT_FALSE(root->getChild("other"));
    c.putBack();
    EXPECT_TRUE(canEventuallySetK(root));
    root->unset("k", "user");
  }
  EXPECT_EQ(contentsOf(openTree(storeIn(user))), "k key\n");
}

TEST_F(UserStoreTest, AnOlderFileInItsPlaceIsReadByAll) {
  const NodePtr first = open(), second = open();
  addKey(first, "k");
  const struct {
    const char* name;
    bool isAnotherFile, looksFirst;
  } cases[] = {{"another file", true, false},
               {"another file, met by a look", true, true},
               {"the same file", false, false},
               {"the same file, met by a look", false, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    first->setAny("k", 1, "user");
    const std::string older = directory.read("settings-1.db");
    for (int value = 2; value < 6; ++value) first->setAny("k", value, "user");
    ASSERT_TRUE(eventually([&] { return contentsOf(second) == "k key\nk = int 5\n"; }));
    // A store that looks too late: the revisions have grown again to those that it knows.
    UserStore behind(storeIn(directory.path()));
    behind.readAll(*boost::make_shared<Node>(Tree::makeStandalone(), "r", true, ValidatorPtr()),
                   kUser);
    testing::internal::CaptureStderr();
    directory.write(c.isAnotherFile ? "new" : "settings-1.db", older);
    if (c.isAnotherFile) std::filesystem::rename(directory.file("new"), database());
    if (c.looksFirst) {
      EXPECT_TRUE(eventually([&] { return contentsOf(first) == "k key\nk = int 1\n"; }));
    }
    // More changes than were lost.
    EXPECT_TRUE(eventually([&] {
      try {
        return first->getChild("new") || addKey(first, "new");
      } catch (const Failure<StoreFailure>&) {
        return false;
      }
    }));
    for (int value = 0; value < 9; ++value) first->setAny("new", value, "user");
    const std::string contents = "k key\nk = int 1\nnew key\nnew = int 8\n";
    EXPECT_TRUE(eventually([&] { return contentsOf(first) == contents; })) << contentsOf(first);
    // A replaced file is reopened; in the same file the journal shows the change.
    if (!c.isAnotherFile) {
      bool comparesAll = false;
      behind.catchUp(
          [&](const ExternalChanges& external) { return comparesAll = external.isEverything; });
      EXPECT_TRUE(comparesAll);
    }
    EXPECT_TRUE(eventually([&] { return contentsOf(second) == contents; })) << contentsOf(second);
    EXPECT_EQ(contentsOf(open()), contents);
    testing::internal::GetCapturedStderr();
    first->removeKey("new");
  }
}

TEST_F(UserStoreTest, ADirectoryThatVanishesIsWaitedFor) {
  const std::string user = directory.file("user"), away = directory.file("away");
  const NodePtr root = openTree(storeIn(user));
  addKey(root, "k");
  std::filesystem::rename(user, away);
  // The system's reason is known once the watching thread has tried to open the database.
  EXPECT_TRUE(eventually([&] {
    return messageOf<StoreFailure>([&] { root->setAny("k", 1, "user"); }).find("No such file") !=
           std::string::npos;
  }));
  EXPECT_FALSE(std::filesystem::exists(user));
  std::filesystem::rename(away, user);
  EXPECT_TRUE(canEventuallySetK(root));
  EXPECT_EQ(contentsOf(openTree(storeIn(user))), "k key\nk = int 1\n");
}

TEST_F(UserStoreTest, ExternalChangesAreDeliveredAgainAfterAFailure) {
  const NodePtr root = open();
  const auto behind =
      boost::make_shared<Node>(Tree::makeStandalone(), "settings", true, ValidatorPtr());
  UserStore store(storeIn(directory.path()));
  store.readAll(*behind, kUser);
  std::atomic<int> looks{0};
  testing::internal::CaptureStderr();
  store.watch([&] {
    store.catchUp([&](const ExternalChanges& external) {
      if (++looks == 1) throw std::bad_alloc();
      applyExternalChanges(*behind, kUser, external);
      return true;
    });
  });
  addKey(root, "k");
  EXPECT_TRUE(eventually([&] { return contentsOf(behind) == "k key\n"; }));
  EXPECT_GT(looks, 1);
  EXPECT_NE(
      testing::internal::GetCapturedStderr().find("settings-1.stamp: cannot check for changes: "),
      std::string::npos);
}

TEST_F(UserStoreTest, AProcessThatMissesJournalRowsComparesEverything) {
  const NodePtr root = open();
  const SettingsPtr node = addNode(root, "node");
  for (const SettingsPtr& parent : {SettingsPtr(root), node}) {
    for (const char* name : {"becomesNode", "becomesText", "gone", "kept", "unset"}) {
      addKey(parent, name);
      parent->setAny(name, 1, "user");
    }
    addKey(addNode(parent, "becomesKey"), "k");
  }
  // Another program changes the database, and writes to the journal only a revision.
  shell()->execute(
      "BEGIN; DELETE FROM definitions WHERE path LIKE '%gone' OR path LIKE '%becomesKey.k';"
      "UPDATE definitions SET entry = 'key' WHERE path LIKE '%becomesKey';"
      "UPDATE definitions SET entry = 'node', type = NULL WHERE path LIKE '%becomesNode';"
      "UPDATE definitions SET type = 'string' WHERE path LIKE '%becomesText';"
      "DELETE FROM settings WHERE path NOT LIKE '%kept' AND path NOT LIKE '%becomesText';"
      "UPDATE settings SET value = '2';"
      "UPDATE settings SET type = 'string' WHERE path LIKE '%becomesText';"
      "DELETE FROM journal; INSERT INTO journal VALUES(900, ''); COMMIT");
  EXPECT_TRUE(eventually([&] { return intAt(root, "kept") == 2; }));
  const std::string contents = contentsOf(root);
  EXPECT_EQ(contents, contentsOf(open()));
  const std::string below =
      "node.becomesKey key\nnode.becomesNode node\nnode.becomesText key\n"
      "node.becomesText = string 2\nnode.kept key\nnode.kept = int 2\nnode.unset key\n";
  EXPECT_NE(contents.find(below), std::string::npos) << contents;
}

TEST_F(UserStoreTest, TheJournalIsKeptShort) {
  const NodePtr root = open();
  addKey(root, "k");
  shell()->execute(
      "WITH RECURSIVE numbers(n) AS (SELECT 2 UNION ALL SELECT n + 1 FROM numbers WHERE n < 5100)"
      " INSERT INTO journal SELECT n, '' FROM numbers");
  for (int value = 0; value < 100; ++value) root->setAny("k", value, "user");
  EXPECT_LE(shell()->number("SELECT count(*) FROM journal"), 4096 + 256);
  EXPECT_EQ(shell()->number("SELECT max(revision) FROM journal"), 5200);
}

}  // namespace
}  // namespace test
