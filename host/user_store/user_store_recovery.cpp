#include "host/user_store/user_store_recovery.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>

#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/user_store/rollback_journal.h"
#include "host/user_store/user_database.h"

namespace zlutil::settings::host {
namespace {

constexpr int kNoWait = 0;

void report(const UserStoreFiles& files, const std::string& message) {
  logError(shownFileName(files.database()) + ": " + message);
}

std::string transactions(std::int64_t count) {
  return count == 1 ? "the last transaction"
                    : "the last " + std::to_string(count) + " transactions";
}

// Copies a file and flushes the copy. Does nothing if there is no such file.
void copyFile(const std::string& from, const std::string& to) {
  if (access(from.c_str(), F_OK) != 0) return;
  makeFile(to);
  std::error_code error;
  std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, error);
  if (error) {
    throw SqliteError(SQLITE_CANTOPEN, "no copy of it can be made: " + systemText(error.value()));
  }
  flushFile(to);
}

// Copies the database and the files that SQLite applies to it when it opens it.
void copyDatabase(const std::string& from, const std::string& to) {
  for (const char* suffix : kDatabaseSuffixes) copyFile(from + suffix, to + suffix);
}

void removeFile(const std::string& file) {
  if (unlink(file.c_str()) != 0 && errno != ENOENT) {
    throw SqliteError(SQLITE_CANTOPEN, systemText(errno));
  }
}

// The readable content of a damaged database.
struct Salvage {
  Changes definitions, values, setAside;
  bool isComplete = false;

  // `noted` is the last revision that it should have. Changes the file.
  Salvage(const std::string& file, std::int64_t noted) {
    if (access(file.c_str(), F_OK) != 0) return;
    isComplete = stateOfJournal(file + "-journal", file) != JournalState::kDamaged;
    try {
      SqliteDatabase database(file, SQLITE_OPEN_READWRITE, kNoWait);
      isComplete = isInOrder(database, noted) && isComplete;
      read(database, &UserDatabase::readDefinitions, definitions);
      read(database, &UserDatabase::readValues, values);
      read(database, &UserDatabase::readSetAside, setAside);
    } catch (const SqliteError& error) {
      // Says nothing about the content; the next attempt may open it.
      if (error.code() == SQLITE_CANTOPEN) throw;
      isComplete = false;
    }
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
    // From one end to the first damaged row, then from the other end.
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

// The newest generation that is not damaged, or nothing.
std::optional<std::string> bestBackup(const UserStoreFiles& files) {
  for (int generation = 1; generation <= kBackupGenerations; ++generation) {
    try {
      SqliteDatabase backup(files.backup(generation), SQLITE_OPEN_READONLY, kNoWait);
      const std::int64_t version = backup.number("PRAGMA user_version");
      if (version > 0 && version <= kUserSchemaVersion &&
          backup.text("PRAGMA quick_check(1)") == "ok") {
        return files.backup(generation);
      }
    } catch (const SqliteError& error) {
      // An older one may be readable. A backup that is not damaged may be readable later.
      const bool exists = access(files.backup(generation).c_str(), F_OK) == 0;
      if (exists && !error.isDamage()) throw;
    }
  }
  return std::nullopt;
}

// Writes the new database, under a name of its own.
void build(const std::string& file, const std::optional<std::string>& backup,
           const Salvage& salvage, const std::string& identity) {
  unlink(file.c_str());
  makeFile(file);
  auto connection = std::make_unique<SqliteDatabase>(file, SQLITE_OPEN_READWRITE, kNoWait);
  if (backup) {
    SqliteDatabase source(*backup, SQLITE_OPEN_READONLY, kNoWait);
    source.copyTo(*connection);
  }
  UserDatabase::makeSchema(*connection, identity);
  UserDatabase database(std::move(connection));
  database.beginWriting();
  database.put(salvage.definitions);
  database.put(salvage.values);
  database.putAside(salvage.setAside);
  database.record({});
  database.commit();
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

CopyAside::~CopyAside() {
  if (isKept_) return;
  for (const char* suffix : kDatabaseSuffixes) unlink((name_ + suffix).c_str());
}

void CopyAside::make() {
  if (isMade_) return;
  copyDatabase(files_.database(), name_);
  isMade_ = access(name_.c_str(), F_OK) == 0;
}

void CopyAside::keep() { isKept_ = true; }

void restoreUserStore(const UserStoreFiles& files, CopyAside& copy, UserStoreStamp& stamp,
                      const std::string& reason, const std::string& identity) {
  // The damaged files stay until the other database is complete, so that the next opening finds
  // them if this is interrupted.
  copy.make();
  const std::string salvaged = files.salvaged();
  for (const char* suffix : kDatabaseSuffixes) removeFile(salvaged + suffix);
  if (copy.isMade()) copyDatabase(copy.name(), salvaged);
  const Salvage salvage(salvaged, stamp.last());
  std::optional<std::string> backup;
  if (!salvage.isComplete) backup = bestBackup(files);
  build(files.unfinished(), backup, salvage, identity);
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) removeFile(salvaged + suffix);

  std::string message = "the settings were damaged (" + reason + "). ";
  if (copy.isMade()) message += "The damaged file is now " + shownFileName(copy.name()) + ". ";
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
  // Reported before the rename that makes it valid: a crash in between repeats the report.
  report(files, message);
  moveFile(files.unfinished(), files.restored());
  copy.keep();
  files.flushDirectory();
  putRestoredInPlace(files, stamp);
}

void putRestoredInPlace(const UserStoreFiles& files, UserStoreStamp& stamp) {
  if (access(files.restored().c_str(), F_OK) != 0) return;
  // These belong to the damaged database, and must be removed durably before the rename.
  stamp.clear();
  removeFile(files.journal());
  removeFile(files.wal());
  removeFile(files.sharedMemory());
  files.flushDirectory();
  moveFile(files.restored(), files.database());
  files.flushDirectory();
}

void setForeignLogsAside(const UserStoreFiles& files) {
  const std::string database = files.database();
  const auto setAside = [&](const std::string& log, const char* suffix) {
    const std::string aside = files.damaged() + suffix;
    moveFile(log, aside);
    files.flushDirectory();
    report(files, "\"" + shownFileName(log) +
                      "\" was beside it and belongs to another database, or to another state of "
                      "this one. It is now \"" +
                      shownFileName(aside) + "\", and the database is used without it.");
  };
  if (stateOfJournal(files.journal(), database) == JournalState::kForeign) {
    setAside(files.journal(), "-journal");
  }
  if (isForeignLog(files.wal(), database)) setAside(files.wal(), "-wal");
}

void reportShortened(const UserStoreFiles& files, std::int64_t missing, CopyAside* copy) {
  if (!copy) {
    report(files, "it lacks " + transactions(missing) +
                      " that the stamp file knows. Unless an older file was put here on purpose, "
                      "this is lost.");
    return;
  }
  copy->keep();
  files.flushDirectory();
  report(files,
         "Lost: " + transactions(missing) +
             ". The log of the database is damaged. All that is left has been read; a copy as "
             "it was found is " +
             shownFileName(copy->name()) + ".");
}

}  // namespace zlutil::settings::host
