// Backing up the user store and restoring it, while other trees use it.
#include "service/backup.h"

#include <atomic>

#include "service/history.h"
#include "tests/support/user_store_fixture.h"

namespace test {
namespace {

using namespace KORVEN::settings::core;
using namespace zlutil::settings;
using namespace zlutil::settings::host;

class BackupTest : public UserStoreTest {
 protected:
  const std::string copy = directory.file("copy.db");
  const base::ustring copyName = base::to_ustring(copy);
};

TEST_F(BackupTest, RestoringGivesBackEntriesTypesAndValidators) {
  const JValidator range("com.velonix.services.settings.validators.Range", "0..9");
  const NodePtr root = open();
  for (const char* name : {"same", "changed", "unset", "removed", "retyped"}) {
    addKey(root, name, range);
    root->setAny(name, 1, "user");
  }
  backUpUserLevel(root, copyName);
  const std::string before = contentsOf(root);
  root->setAny("changed", 2, "user");
  root->unset("unset", "user");
  root->removeKey("removed");
  root->removeKey("retyped");
  addKey(root, "retyped");
  root->setAny("retyped", std::string("text"), "user");
  addKey(addNode(root, "later"), "k");
  const NodePtr other = open();
  const Listener here(root), there(other);
  const std::string kept = restoreUserLevel(root, copyName);
  EXPECT_EQ(intAt(root, "changed"), 1);
  EXPECT_EQ(intAt(root, "removed"), 1);
  EXPECT_FALSE(root->getChild("later"));
  EXPECT_TRUE(
      eventually([&] { return intAt(other, "changed") == 1 && !other->getChild("later"); }));
  EXPECT_EQ(contentsOf(open()), before);
  const Names heard = here.waitFor(8);
  EXPECT_EQ(heard, there.waitFor(8));
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "changed same"), 0);
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "changed changed"), 1);
  // The next changes of both trees go on from there.
  other->setAny("unset", 5, "user");
  root->setAny("changed", 6, "user");
  EXPECT_EQ(intAt(root, "unset"), 5);
  EXPECT_TRUE(eventually([&] { return intAt(other, "changed") == 6; }));
  restoreUserLevel(other, base::to_ustring(kept));
  EXPECT_EQ(intAt(other, "changed"), 2);
}

TEST_F(BackupTest, ABackupIsOneStateWhileOthersWrite) {
  const NodePtr root = open();
  SettingsValues values;
  for (int key = 0; key < 200; ++key)
    values.emplace_back(addKey(root, "k" + std::to_string(key)), 0);
  std::atomic<bool> isDone{false};
  std::thread writer([&] {
    for (int n = 1; !isDone; ++n) {
      for (auto& value : values) value.second = n;
      EXPECT_TRUE(setAll(root, values, "user").empty());
    }
  });
  const NodePtr other = open();
  for (int copies = 0; copies < 20; ++copies) {
    backUpUserLevel(other, copyName);
    SqliteDatabase database(copy, SQLITE_OPEN_READONLY, 0);
    EXPECT_EQ(database.text("PRAGMA integrity_check"), "ok");
    EXPECT_LE(database.number("SELECT count(DISTINCT value) FROM settings"), 1);
  }
  isDone = true;
  writer.join();
}

TEST_F(BackupTest, WhatIsNoBackupIsRefused) {
  const NodePtr root = open();
  addKey(root, "k");
  root->setAny("k", 1, "user");
  backUpUserLevel(root, copyName);
  const auto reason = [&](const char* sql) {
    SqliteDatabase(copy, SQLITE_OPEN_READWRITE, 0).execute(sql);
    return messageOf<StoreFailure>([&] { restoreUserLevel(root, copyName); });
  };
  EXPECT_NE(reason("PRAGMA user_version=3").find("a newer version"), std::string::npos);
  EXPECT_NE(reason("PRAGMA user_version=2; PRAGMA application_id=1").find("no copy of a user's"),
            std::string::npos);
  EXPECT_NE(messageOf<StoreFailure>([&] {
              backUpUserLevel(Settings::importAsStandaloneObject(base::to_ustring(
                                  directory.write("a.xml", "<settings version=\"1\"/>"))),
                              copyName);
            }).find("does not store it"),
            std::string::npos);
  EXPECT_EQ(intAt(root, "k"), 1);
  for (const auto& file : std::filesystem::directory_iterator(directory.path())) {
    EXPECT_EQ(file.path().string().find(".before-"), std::string::npos) << file.path();
  }
}

}  // namespace
}  // namespace test
