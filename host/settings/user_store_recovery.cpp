#include "host/settings/user_store_recovery.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>

#include "host/settings/file_name.h"
#include "host/settings/user_database.h"

namespace zlutil::settings::host {
namespace {

constexpr int kNoWait = 0;

void moveAside(const std::string& from, const std::string& to) {
  if (rename(from.c_str(), to.c_str()) != 0 && errno != ENOENT) {
    throw SqliteError(SQLITE_CANTOPEN, systemText(errno));
  }
}

// What can be read of a database that is damaged.
struct Salvage {
  Changes definitions, values;
  bool isComplete = true;

  explicit Salvage(const std::string& file) {
    try {
      SqliteDatabase database(file, SQLITE_OPEN_READONLY, kNoWait);
      isComplete = database.text("PRAGMA quick_check(1)") == "ok";
      read(database, &UserDatabase::readDefinitions, definitions);
      read(database, &UserDatabase::readValues, values);
    } catch (const SqliteError&) {
      isComplete = false;
    }
    unlink((file + "-shm").c_str());
  }

 private:
  template <class Read>
  void read(SqliteDatabase& database, const Read& read, Changes& contents) {
    // From the one end as far as it goes, and then from the other.
    Changes fromEnd;
    if (!readOneWay(database, read, false, contents)) readOneWay(database, read, true, fromEnd);
    contents.insert(contents.end(), fromEnd.rbegin(), fromEnd.rend());
  }

  template <class Read>
  bool readOneWay(SqliteDatabase& database, const Read& read, bool descending, Changes& contents) {
    try {
      const auto leftOut = [this](const std::string&, const std::string&) { isComplete = false; };
      read(database, descending, leftOut, contents);
      return true;
    } catch (const SqliteError&) {
      isComplete = false;
      return false;
    }
  }
};

// The newest generation that is in order, or nothing.
std::optional<std::string> bestBackup(const UserStoreFiles& files) {
  for (int generation = 1; generation <= kBackupGenerations; ++generation) {
    try {
      SqliteDatabase backup(files.backup(generation), SQLITE_OPEN_READONLY, kNoWait);
      if (backup.number("PRAGMA user_version") == kUserSchemaVersion &&
          backup.text("PRAGMA quick_check(1)") == "ok") {
        return files.backup(generation);
      }
    } catch (const SqliteError&) {
      // An older one may be better.
    }
  }
  return std::nullopt;
}

// Writes the new database beside the place where it is to stand.
void build(const std::string& file, const std::optional<std::string>& backup,
           const Salvage& salvage) {
  unlink(file.c_str());
  auto connection =
      std::make_unique<SqliteDatabase>(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, kNoWait);
  if (backup) {
    SqliteDatabase source(*backup, SQLITE_OPEN_READONLY, kNoWait);
    source.copyTo(*connection);
  }
  UserDatabase::makeSchema(*connection);
  UserDatabase database(std::move(connection));
  database.beginWriting();
  for (const Changes* changes : {&salvage.definitions, &salvage.values}) {
    for (const Change& change : *changes) database.put(change);
  }
  database.record({});
  database.commit();
  if (chmod(file.c_str(), 0600) != 0) throw SqliteError(SQLITE_CANTOPEN, systemText(errno));
}

std::string dateOf(const std::string& file) {
  struct stat status;
  struct tm local;
  char text[32] = "";
  if (stat(file.c_str(), &status) == 0) {
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", localtime_r(&status.st_mtime, &local));
  }
  return text;
}

}  // namespace

void restoreUserStore(const UserStoreFiles& files, const std::string& reason) {
  const std::string aside = files.damaged();
  moveAside(files.wal(), aside + "-wal");
  moveAside(files.database(), aside);
  unlink(files.sharedMemory().c_str());
  files.flushDirectory();

  const Salvage salvage(aside);
  std::optional<std::string> backup;
  if (!salvage.isComplete) backup = bestBackup(files);
  const std::string restored = files.database() + ".restored";
  build(restored, backup, salvage);
  moveAside(restored, files.database());
  files.flushDirectory();

  std::string message = shownFileName(files.database()) + ": the settings were damaged (" + reason +
                        "). The damaged file is now " + shownFileName(aside) + ". ";
  const std::string counts = std::to_string(salvage.definitions.size()) + " entries and " +
                             std::to_string(salvage.values.size()) + " values";
  if (salvage.isComplete) {
    message += "Everything in it could be read (" + counts + "): nothing is lost.";
  } else if (backup) {
    message += "Restored: the state of " + dateOf(*backup) + ", and over it " + counts +
               " that could be read. Lost: later changes that could not be read.";
  } else {
    message += "There is no backup. Restored: " + counts +
               " that could be read. Lost: everything that could not be read.";
  }
  std::fprintf(stderr, "%s\n", base::displayFromNarrow(message).c_str());
}

}  // namespace zlutil::settings::host
