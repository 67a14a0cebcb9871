#include "host/user_store/database_copy.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "host/os/file_name.h"
#include "host/os/flush_directory.h"
#include "host/user_store/user_store_files.h"

namespace zlutil::settings::host {
namespace {

constexpr int kNoWait = 0;
constexpr char kCopied[] = "copied";  // the name of the copy's content in SQL

// Rows that stay the same are not written, so that the history has what really changes.
constexpr char kPutInPlace[] =
    "DELETE FROM main.settings WHERE path NOT IN (SELECT path FROM copied.settings);"
    "DELETE FROM main.definitions WHERE path NOT IN (SELECT path FROM copied.definitions);"
    "REPLACE INTO main.definitions(path, entry, type, validator, first, second)"
    " SELECT path, entry, type, validator, first, second FROM copied.definitions EXCEPT"
    " SELECT path, entry, type, validator, first, second FROM main.definitions;"
    "INSERT INTO main.settings(path, type, value)"
    " SELECT path, type, value FROM copied.settings WHERE true"
    " ON CONFLICT(path) DO UPDATE SET type = excluded.type, value = excluded.value"
    " WHERE type IS NOT excluded.type OR value IS NOT excluded.value;";

// Throws if the file is no whole copy of a user store.
void check(SqliteDatabase& copy) {
  if (copy.number("PRAGMA application_id") != kApplicationId) {
    throw SqliteError(SQLITE_NOTADB, "it is no copy of a user's settings");
  }
  const std::int64_t version = copy.number("PRAGMA user_version");
  if (version < 1 || version > kUserSchemaVersion) {
    throw SqliteError(SQLITE_NOTADB, "it was written by a newer version");
  }
  const std::string verdict = copy.text("PRAGMA quick_check(1)");
  if (verdict != "ok") throw SqliteError(SQLITE_CORRUPT, "it is damaged: " + verdict);
}

}  // namespace

void writeCopy(SqliteDatabase& source, const std::string& file) {
  makeFile(file);
  {
    SqliteDatabase copy(file, SQLITE_OPEN_READWRITE, kNoWait);
    source.copyTo(copy);
    copy.execute("PRAGMA journal_mode=DELETE");
  }
  flushFile(file);
}

void replaceByCopy(SqliteDatabase& source, const std::string& file) {
  const std::string unfinished = file + ".unfinished";
  unlink(unfinished.c_str());
  try {
    writeCopy(source, unfinished);
    moveFile(unfinished, file);
    if (!flushDirectory(std::filesystem::path(file).parent_path().string()))
      throw SqliteError(SQLITE_IOERR, systemText(errno));
  } catch (const SqliteError& error) {
    unlink(unfinished.c_str());
    throw SqliteError(SQLITE_ERROR,
                      "no copy \"" + shownFileName(file) + "\" can be made: " + error.what());
  }
}

CopiedContent::CopiedContent(UserDatabase& database, const std::string& file)
    : database_(database) {
  try {
    SqliteDatabase copy(file, SQLITE_OPEN_READONLY, kNoWait);
    check(copy);
    database.connection().execute("ATTACH ':memory:' AS copied");
    copy.copyTo(database.connection(), kCopied);
  } catch (const SqliteError& error) {
    sqlite3_exec(database.connection().handle(), "DETACH copied", nullptr, nullptr, nullptr);
    throw SqliteError(SQLITE_ERROR,
                      "\"" + shownFileName(file) + "\" cannot be restored: " + error.what());
  }
}

CopiedContent::~CopiedContent() {
  sqlite3_exec(database_.connection().handle(), "DETACH copied", nullptr, nullptr, nullptr);
}

void CopiedContent::putInPlace(std::int64_t revision) {
  database_.history().begin(revision);
  database_.connection().execute(kPutInPlace);
  database_.skipTo(revision);
}

}  // namespace zlutil::settings::host
