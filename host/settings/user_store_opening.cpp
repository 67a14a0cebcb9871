#include "host/settings/user_store_opening.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "host/settings/file_name.h"
#include "host/settings/user_store_recovery.h"
#include "host/settings/user_store_stamp.h"

namespace zlutil::settings::host {
namespace {

constexpr char kEmptied[] = "it is empty";

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

// Throws a SqliteError that isDamage() when the database is not as it should be.
std::unique_ptr<UserDatabase> openAndCheck(const UserStoreFiles& files,
                                           const UserStoreOptions& options) {
  if (!hasContent(files.database())) {
    // SQLite would take a log without its database for rubbish.
    if (hasContent(files.wal()) || exists(files.backup(1))) {
      throw SqliteError(SQLITE_NOTADB, kEmptied);
    }
    // Its mode is that of all files that SQLite makes beside it.
    const FileDescriptor made(open(files.database().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!made) throw SqliteError(SQLITE_CANTOPEN, systemText(errno));
  }
  auto connection = std::make_unique<SqliteDatabase>(files.database(), SQLITE_OPEN_READWRITE,
                                                     options.busyTimeout);
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
  connection->execute("PRAGMA cell_size_check=ON");
  if (version != 0) {
    const std::string verdict = connection->text("PRAGMA quick_check(1)");
    if (verdict != "ok") throw SqliteError(SQLITE_CORRUPT, verdict);
  }
  connection->execute("PRAGMA journal_mode=WAL");
  connection->execute(options.relaxed ? "PRAGMA synchronous=NORMAL" : "PRAGMA synchronous=FULL");
  UserDatabase::makeSchema(*connection);
  // Where the memory that connections share cannot be made, reading works and only this does not.
  connection->execute("BEGIN IMMEDIATE; ROLLBACK");
  try {
    return std::make_unique<UserDatabase>(std::move(connection));
  } catch (const SqliteError& error) {
    // The version says that the tables are there.
    if (error.code() == SQLITE_ERROR) throw SqliteError(SQLITE_CORRUPT, error.what());
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

}  // namespace

std::unique_ptr<UserDatabase> openUserDatabase(const UserStoreFiles& files,
                                               const UserStoreOptions& options) {
  const UserStoreLock lock(files, options.busyTimeout);
  UserStoreStamp stamp(files.stamp());
  putRestoredInPlace(files, stamp);
  // Asked before the database, to which other processes may be adding.
  const std::int64_t noted = stamp.last();
  std::unique_ptr<UserDatabase> database;
  try {
    database = openAndCheck(files, options);
  } catch (const SqliteError& error) {
    if (!error.isDamage()) throw;
    restoreUserStore(files, stamp, error.what(), options.busyTimeout);
    return openAndCheck(files, options);
  }
  const std::int64_t last = database->lastRevision();
  if (last < noted) {
    keepCopyOfShortened(files, noted - last);
    stamp.clear();
  }
  return database;
}

Changes readWithoutWriting(const UserStoreFiles& files, const UserDatabase::Report& report) {
  Changes contents;
  if (!hasContent(files.database())) return contents;
  // Reading the log needs a file of shared memory beside it, so a copy is read.
  const ScratchDirectory scratch;
  const std::string copy = scratch.file("settings.db");
  std::error_code error;
  std::filesystem::copy_file(files.database(), copy, error);
  if (!error && hasContent(files.wal())) {
    std::filesystem::copy_file(files.wal(), copy + "-wal", error);
  }
  if (error) throw SqliteError(SQLITE_CANTOPEN, systemText(error.value()));
  SqliteDatabase database(copy, SQLITE_OPEN_READWRITE, 0);
  checkVersion(database.number("PRAGMA user_version"));
  UserDatabase::readDefinitions(database, false, report, contents);
  UserDatabase::readValues(database, false, report, contents);
  return contents;
}

}  // namespace zlutil::settings::host
