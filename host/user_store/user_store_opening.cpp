#include "host/user_store/user_store_opening.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "host/os/file_name.h"
#include "host/user_store/rollback_journal.h"
#include "host/user_store/user_store_recovery.h"
#include "host/user_store/user_store_stamp.h"

namespace zlutil::settings::host {
namespace {

constexpr char kMissing[] = "the file is missing";
constexpr char kEmptied[] = "it is empty";
// SQLite adds "-journal" to a name and takes 512 bytes in all.
constexpr std::size_t kLongestName = 504;
// The journal is cut back to its size limit after a large transaction.
constexpr char kSettings[] =
    "PRAGMA journal_size_limit=1048576; PRAGMA synchronous=FULL; PRAGMA cell_size_check=ON";

bool exists(const std::string& file) { return access(file.c_str(), F_OK) == 0; }

bool hasContent(const std::string& file) {
  struct stat status;
  return stat(file.c_str(), &status) == 0 && status.st_size > 0;
}

void checkVersion(std::int64_t version) {
  if (version <= kUserSchemaVersion) return;
  throw SqliteError(SQLITE_ERROR, "it was written by a newer version (schema " +
                                      std::to_string(version) + ", this one knows " +
                                      std::to_string(kUserSchemaVersion) + ")");
}

void checkLength(const std::string& file) {
  std::error_code error;
  const std::size_t length = std::filesystem::absolute(file, error).string().size();
  if (error || length <= kLongestName) return;
  throw SqliteError(SQLITE_CANTOPEN, "its path has " + std::to_string(length) +
                                         " bytes, and SQLite takes no more than " +
                                         std::to_string(kLongestName) +
                                         ": name a shorter directory in SETTINGS_USERDIR");
}

// Makes an empty database file if there is none. Throws if other files show that there was one.
void makeDatabaseFile(const UserStoreFiles& files) {
  if (hasContent(files.database())) return;
  const JournalState journal = stateOfJournal(files.journal(), files.database());
  if (journal != JournalState::kEmpty || hasContent(files.wal()) || exists(files.backup(1))) {
    throw SqliteError(SQLITE_NOTADB, exists(files.database()) ? kEmptied : kMissing);
  }
  makeFile(files.database());
}

// Throws a SqliteError with isDamage() if the database is damaged.
std::unique_ptr<UserDatabase> openAndCheck(const UserStoreFiles& files, int lockWait,
                                           const UserStoreLock& lock) {
  makeDatabaseFile(files);
  auto connection =
      std::make_unique<SqliteDatabase>(files.database(), SQLITE_OPEN_READWRITE, lockWait);
  // SQLite opens a file for reading only if it cannot write it.
  if (sqlite3_db_readonly(connection->handle(), "main") != 0) {
    const bool mayWrite = access(files.database().c_str(), W_OK) == 0;
    throw SqliteError(SQLITE_READONLY, mayWrite ? "it can only be read" : systemText(errno));
  }
  const std::int64_t version = connection->number("PRAGMA user_version");
  checkVersion(version);
  if (version == 0 &&
      (exists(files.backup(1)) || connection->number("SELECT count(*) FROM sqlite_schema") > 0)) {
    throw SqliteError(SQLITE_NOTADB, kEmptied);
  }
  const std::int64_t application = connection->number("PRAGMA application_id");
  if (application != 0 && application != kApplicationId) {
    throw SqliteError(SQLITE_NOTADB, "it is marked as the file of another application");
  }
  connection->execute(kSettings);
  if (version != 0) {
    const std::string verdict = connection->text("PRAGMA quick_check(1)");
    if (verdict != "ok") throw SqliteError(SQLITE_CORRUPT, verdict);
    if (connection->number("SELECT count(*) FROM sqlite_schema WHERE type = 'table'"
                           " AND name IN ('definitions', 'settings', 'journal')") != 3) {
      throw SqliteError(SQLITE_CORRUPT, "it lacks a table");
    }
  }
  connection->useRollbackJournal();
  // Fails here, and not at the first change, if the journal cannot be made or opened.
  makeFile(files.journal());
  UserDatabase::makeSchema(*connection, version == 0 ? "" : lock.identity());
  try {
    return std::make_unique<UserDatabase>(std::move(connection));
  } catch (const SqliteError& error) {
    // A table or column is missing that the version promises.
    if (error.code() == SQLITE_ERROR) throw SqliteError(SQLITE_CORRUPT, error.what());
    throw;
  }
}

// Skips the revisions up to that of the stamp file. After an older file has replaced the database,
// its next revisions would otherwise be those that other processes already know.
void skipNoted(UserDatabase& database, std::int64_t noted) {
  database.beginWriting();
  try {
    database.skipTo(noted + 2);
    database.commit();
  } catch (const SqliteError&) {
    database.rollBack();
    throw;
  }
}

// A temporary directory, in memory if possible, which its destructor removes.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    for (std::string pattern : {"/dev/shm/settings.XXXXXX", "/tmp/settings.XXXXXX"}) {
      if (!mkdtemp(&pattern[0])) continue;
      path_ = pattern;
      return;
    }
    throw SqliteError(SQLITE_CANTOPEN, systemText(errno));
  }
  ~ScratchDirectory() {
    std::error_code ignored;  // remaining files do no harm
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::string file(const char* name) const { return path_ + '/' + name; }

 private:
  std::string path_;
};

Changes contentsOf(const std::string& file, int flags, const UserDatabase::Report& report) {
  constexpr int kNoWait = 0;
  Changes contents;
  SqliteDatabase database(file, flags, kNoWait);
  checkVersion(database.number("PRAGMA user_version"));
  UserDatabase::readDefinitions(database, false, report, contents);
  UserDatabase::readValues(database, false, report, contents);
  return contents;
}

}  // namespace

std::unique_ptr<UserDatabase> openUserDatabase(const UserStoreFiles& files, int lockWait,
                                               const UserStoreLock& lock) {
  checkLength(files.database());
  UserStoreStamp stamp(files.stamp());
  putRestoredInPlace(files, stamp);
  setForeignLogsAside(files);
  // SQLite changes the database as soon as it finds a journal or log to apply.
  CopyAside copy(files);
  const JournalState journal = stateOfJournal(files.journal(), files.database());
  const bool hasLog = journal != JournalState::kEmpty || hasContent(files.wal());
  if (hasLog) copy.make();
  std::unique_ptr<UserDatabase> database;
  try {
    if (journal == JournalState::kDamaged) {
      throw SqliteError(SQLITE_CORRUPT, "the journal of an unfinished transaction is damaged");
    }
    database = openAndCheck(files, lockWait, lock);
  } catch (const SqliteError& error) {
    if (!error.isDamage()) throw;
    restoreUserStore(files, copy, stamp, error.what(), lock.identity());
    database = openAndCheck(files, lockWait, lock);
  }
  const std::int64_t noted = stamp.last(), last = database->lastRevision();
  if (last < noted) {
    reportShortened(files, noted - last, hasLog ? &copy : nullptr);
    skipNoted(*database, noted);
  }
  lock.setIdentity(database->identity());
  return database;
}

std::optional<std::string> identityOf(const UserStoreFiles& files, int lockWait) {
  SqliteDatabase database(files.database(), SQLITE_OPEN_READONLY, lockWait);
  try {
    return database.text("SELECT identity FROM store");
  } catch (const SqliteError& error) {
    // Earlier versions had no identities.
    if (error.code() == SQLITE_ERROR) return std::nullopt;
    throw;
  }
}

Changes readWithoutWriting(const UserStoreFiles& files, const UserDatabase::Report& report) {
  if (!hasContent(files.database())) return {};
  files.checkDirectory();
  try {
    return contentsOf(files.database(), SQLITE_OPEN_READONLY, report);
  } catch (const SqliteError&) {
    // A killed process may have left a journal, which must be applied first: to a copy.
  }
  const ScratchDirectory scratch;
  const std::string copy = scratch.file("settings.db");
  std::error_code error;
  std::filesystem::copy_file(files.database(), copy, error);
  for (const auto& [log, suffix] :
       {std::pair(files.journal(), "-journal"), {files.wal(), "-wal"}}) {
    if (!error && hasContent(log)) std::filesystem::copy_file(log, copy + suffix, error);
  }
  if (error) throw SqliteError(SQLITE_CANTOPEN, systemText(error.value()));
  return contentsOf(copy, SQLITE_OPEN_READWRITE, report);
}

}  // namespace zlutil::settings::host
