#include "host/settings/user_store_recovery.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>

#include "host/settings/file_name.h"
#include "host/settings/report.h"
#include "host/settings/user_database.h"

namespace zlutil::settings::host {
namespace {

constexpr int kNoWait = 0;

void say(const UserStoreFiles& files, const std::string& message) {
  report(shownFileName(files.database()) + ": " + message);
}

std::string transactions(std::int64_t count) {
  return count == 1 ? "the last transaction"
                    : "the last " + std::to_string(count) + " transactions";
}

void copyAside(const std::string& from, const std::string& to) {
  std::error_code error;
  std::filesystem::copy_file(from, to, error);
  if (error && error != std::errc::no_such_file_or_directory) {
    throw SqliteError(SQLITE_CANTOPEN,
                      "a copy of the damaged file cannot be kept: " + systemText(error.value()));
  }
}

// A copy of the damaged files, with their log. Those who fail may try again and again, so it goes
// unless it is kept.
class CopyAside {
 public:
  explicit CopyAside(const UserStoreFiles& files) : name_(files.damaged()) {}
  ~CopyAside() {
    if (isKept_) return;
    unlink(name_.c_str());
    unlink((name_ + "-wal").c_str());
  }
  CopyAside(const CopyAside&) = delete;
  CopyAside& operator=(const CopyAside&) = delete;

  const std::string& name() const { return name_; }
  void make(const UserStoreFiles& files) const {
    copyAside(files.database(), name_);
    copyAside(files.wal(), name_ + "-wal");
  }
  void keep() { isKept_ = true; }

 private:
  const std::string name_;
  bool isKept_ = false;
};

void removeFile(const std::string& file) {
  if (unlink(file.c_str()) != 0 && errno != ENOENT) {
    throw SqliteError(SQLITE_CANTOPEN, systemText(errno));
  }
}

// What can be read of a database that is damaged.
struct Salvage {
  Changes definitions, values;
  bool isComplete = true;

  // `noted` is the last transaction that it should have.
  Salvage(const std::string& file, std::int64_t noted) {
    try {
      SqliteDatabase database(file, SQLITE_OPEN_READONLY, kNoWait);
      isComplete = isInOrder(database, noted);
      read(database, &UserDatabase::readDefinitions, definitions);
      read(database, &UserDatabase::readValues, values);
    } catch (const SqliteError& error) {
      // Of this nothing has been found out; it may be open to the next who tries.
      if (error.code() == SQLITE_CANTOPEN) throw;
      isComplete = false;
    }
    unlink((file + "-shm").c_str());
  }

 private:
  static bool isInOrder(SqliteDatabase& database, std::int64_t noted) {
    try {
      return database.text("PRAGMA quick_check(1)") == "ok" &&
             database.number("SELECT max(revision) FROM journal") >= noted;
    } catch (const SqliteError&) {
      return false;
    }
  }

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
    } catch (const SqliteError& error) {
      // An older one may be better. One that only cannot be read now is waited for.
      const bool exists = access(files.backup(generation).c_str(), F_OK) == 0;
      if (exists && !error.isDamage()) throw;
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

// A transaction during which nobody else commits to the database that is to be replaced; null when
// it is too damaged to have one.
std::unique_ptr<SqliteDatabase> keepWritersOut(const UserStoreFiles& files, int busyTimeout) {
  try {
    auto database =
        std::make_unique<SqliteDatabase>(files.database(), SQLITE_OPEN_READWRITE, busyTimeout);
    database->execute("BEGIN IMMEDIATE");
    return database;
  } catch (const SqliteError& error) {
    if (!error.isDamage()) throw;
    return nullptr;
  }
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

void restoreUserStore(const UserStoreFiles& files, UserStoreStamp& stamp, const std::string& reason,
                      int busyTimeout) {
  // Who waits meanwhile finds the database replaced, and commits to the other one.
  const auto writersAreOut = keepWritersOut(files, busyTimeout);
  // The damaged files stay where they are until another database is complete: whatever interrupts
  // this finds them again.
  CopyAside aside(files);
  aside.make(files);

  const Salvage salvage(aside.name(), stamp.last());
  std::optional<std::string> backup;
  if (!salvage.isComplete) backup = bestBackup(files);
  const std::string unfinished = files.database() + ".unfinished";
  build(unfinished, backup, salvage);

  std::string message = "the settings were damaged (" + reason + "). The damaged file is now " +
                        shownFileName(aside.name()) + ". ";
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
  // Said before it counts, so that it is said.
  say(files, message);
  moveFile(unfinished, files.restored());
  aside.keep();
  files.flushDirectory();
  putRestoredInPlace(files, stamp);
}

void putRestoredInPlace(const UserStoreFiles& files, UserStoreStamp& stamp) {
  if (access(files.restored().c_str(), F_OK) != 0) return;
  // These, and the log, belong to the damaged one.
  stamp.clear();
  removeFile(files.wal());
  removeFile(files.sharedMemory());
  moveFile(files.restored(), files.database());
  files.flushDirectory();
}

void keepCopyOfShortened(const UserStoreFiles& files, std::int64_t missing) {
  const std::string aside = files.damaged();
  // The database first: it takes the name, should the log not be copied this time.
  copyAside(files.database(), aside);
  copyAside(files.wal(), aside + "-wal");
  files.flushDirectory();
  say(files, "Lost: " + transactions(missing) +
                 ". The log of the database is damaged, or an older file has been put in its "
                 "place. All that is left has been read; a copy as it was found is " +
                 shownFileName(aside) + ".");
}

}  // namespace zlutil::settings::host
