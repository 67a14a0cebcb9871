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
// What a large transaction has added to the journal is cut off again.
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

// A new database where there is none, unless there has been one.
void makeDatabaseFile(const UserStoreFiles& files) {
  if (hasContent(files.database())) return;
  const JournalState journal = stateOfJournal(files.journal(), files.database());
  if (journal != JournalState::kEmpty || hasContent(files.wal()) || exists(files.backup(1))) {
    throw SqliteError(SQLITE_NOTADB, exists(files.database()) ? kEmptied : kMissing);
  }
  makeFile(files.database());
}

// Throws a SqliteError that isDamage() when the database is not as it should be.
std::unique_ptr<UserDatabase> openAndCheck(const UserStoreFiles& files, int lockWait,
                                           const UserStoreLock& lock) {
  makeDatabaseFile(files);
  auto connection =
      std::make_unique<SqliteDatabase>(files.database(), SQLITE_OPEN_READWRITE, lockWait);
  // SQLite is content with reading where it cannot write.
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
  // Where it can be neither opened nor made, nothing can be written.
  makeFile(files.journal());
  UserDatabase::makeSchema(*connection, version == 0 ? "" : lock.identity());
  try {
    return std::make_unique<UserDatabase>(std::move(connection));
  } catch (const SqliteError& error) {
    // The version says that the tables are there.
    if (error.code() == SQLITE_ERROR) throw SqliteError(SQLITE_CORRUPT, error.what());
    throw;
  }
}

// After an older file has been put in the place of the database, its transactions would have the
// numbers of those that other processes know.
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

// A directory in memory, or where temporary files go; removed at the end.
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
    std::error_code ignored;  // what is left over does no harm
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
  // SQLite changes the database as soon as it finds something beside it to bring in.
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
    // Earlier versions gave it none.
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
    // What a killed process has left beside it has to be brought in first, which is done to a copy.
  }
  const ScratchDirectory scratch;
  const std::string copy = scratch.file("settings.db");
  std::error_code error;
  std::filesystem::copy_file(files.database(), copy, error);
  for (const auto& [log, end] : {std::pair(files.journal(), "-journal"), {files.wal(), "-wal"}}) {
    if (!error && hasContent(log)) std::filesystem::copy_file(log, copy + end, error);
  }
  if (error) throw SqliteError(SQLITE_CANTOPEN, systemText(error.value()));
  return contentsOf(copy, SQLITE_OPEN_READWRITE, report);
}

}  // namespace zlutil::settings::host
