#include "host/user_store/sqlite_database.h"

#include <cerrno>
#include <thread>

#include "host/os/file_name.h"

namespace zlutil::settings::host {
namespace {

constexpr auto kLockPoll = std::chrono::microseconds(200);

std::string reasonOf(sqlite3* handle, int code, std::chrono::milliseconds waited) {
  switch (code & 0xFF) {
    case SQLITE_FULL:
      return systemText(ENOSPC);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return lockedText(waited);
    case SQLITE_TOOBIG:
      return "a value is larger than the 1,000,000,000 bytes that it can hold";
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
    case SQLITE_READONLY:
      if (const int error = handle ? sqlite3_system_errno(handle) : 0) return systemText(error);
      break;
    default:
      break;
  }
  return handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code);
}

}  // namespace

std::string lockedText(std::chrono::milliseconds waited) {
  return "another process has kept it locked for " + std::to_string(waited.count()) +
         " ms (SETTINGS_LOCK_WAIT sets the longest wait)";
}

SqliteDatabase::SqliteDatabase(const std::string& name, int flags, int lockWait)
    : lockWait_(lockWait) {
  const int code = sqlite3_open_v2(name.c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  if (code != SQLITE_OK) {
    const SqliteError failure = error(code);
    sqlite3_close(handle_);
    throw failure;
  }
  sqlite3_extended_result_codes(handle_, 1);
  sqlite3_busy_handler(handle_, &SqliteDatabase::waitForLock, this);
  // The file may hold anything, so its schema is not trusted to run code.
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // A directory for temporary files may be full or missing; in memory none is needed.
  sqlite3_exec(handle_, "PRAGMA temp_store=MEMORY", nullptr, nullptr, nullptr);
}

SqliteDatabase::~SqliteDatabase() { sqlite3_close(handle_); }

// SQLite's own busy handler sleeps for up to 100 ms at a time, while others take the lock again and
// again.
int SqliteDatabase::waitForLock(void* self, int times) {
  auto& database = *static_cast<SqliteDatabase*>(self);
  const auto now = std::chrono::steady_clock::now();
  if (times == 0) database.waitingUntil_ = now + database.lockWait_;
  if (now >= database.waitingUntil_) return 0;
  std::this_thread::sleep_for(kLockPoll);
  return 1;
}

SqliteError SqliteDatabase::error(int code) const {
  return SqliteError(code, reasonOf(handle_, code, lockWait_));
}

void SqliteDatabase::execute(const char* sql) {
  const int code = sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) fail(code);
}

std::int64_t SqliteDatabase::number(const char* sql) {
  return SqliteStatement(*this, sql).onlyNumber();
}

std::string SqliteDatabase::text(const char* sql) {
  SqliteStatement statement(*this, sql);
  return statement.step() ? std::string(statement.bytes(0)) : std::string();
}

void SqliteDatabase::useRollbackJournal() {
  try {
    execute("PRAGMA journal_mode=PERSIST");
  } catch (const SqliteError& error) {
    if (error.code() != SQLITE_BUSY) throw;
  }
}

void SqliteDatabase::copyTo(SqliteDatabase& target, const char* name) {
  sqlite3_backup* const copy = sqlite3_backup_init(target.handle_, name, handle_, "main");
  if (!copy) target.fail(sqlite3_extended_errcode(target.handle_));
  sqlite3_backup_step(copy, -1);
  const int code = sqlite3_backup_finish(copy);
  if (code != SQLITE_OK) target.fail(code);
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, const std::string& sql)
    : database_(database) {
  const int code =
      sqlite3_prepare_v3(database.handle(), sql.c_str(), static_cast<int>(sql.size() + 1),
                         SQLITE_PREPARE_PERSISTENT, &handle_, nullptr);
  if (code != SQLITE_OK) database.fail(code);
}

SqliteStatement::~SqliteStatement() { sqlite3_finalize(handle_); }

void SqliteStatement::bind(int parameter, std::int64_t number) {
  check(sqlite3_bind_int64(handle_, parameter, number));
}

void SqliteStatement::bindText(int parameter, std::string_view utf8) {
  // A null pointer would bind NULL.
  check(sqlite3_bind_text64(handle_, parameter, utf8.data() ? utf8.data() : "", utf8.size(),
                            SQLITE_STATIC, SQLITE_UTF8));
}

void SqliteStatement::bindBlob(int parameter, std::string_view bytes) {
  check(sqlite3_bind_blob64(handle_, parameter, bytes.data() ? bytes.data() : "", bytes.size(),
                            SQLITE_STATIC));
}

void SqliteStatement::bindNull(int parameter) { check(sqlite3_bind_null(handle_, parameter)); }

void SqliteStatement::check(int code) const {
  if (code != SQLITE_OK) database_.fail(code);
}

bool SqliteStatement::step() {
  const int code = sqlite3_step(handle_);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) {
    reset();
    return false;
  }
  const SqliteError error = database_.error(code);
  reset();
  throw error;
}

void SqliteStatement::run() {
  while (step()) {
  }
}

std::int64_t SqliteStatement::onlyNumber() {
  if (!step()) return 0;
  const std::int64_t result = number(0);
  reset();
  return result;
}

// Its result repeats the error of the last step, which has been thrown already.
void SqliteStatement::reset() { sqlite3_reset(handle_); }

bool SqliteStatement::isNull(int column) const {
  return sqlite3_column_type(handle_, column) == SQLITE_NULL;
}

bool SqliteStatement::isBlob(int column) const {
  return sqlite3_column_type(handle_, column) == SQLITE_BLOB;
}

std::int64_t SqliteStatement::number(int column) const {
  return sqlite3_column_int64(handle_, column);
}

std::string_view SqliteStatement::bytes(int column) const {
  const auto* const data = static_cast<const char*>(sqlite3_column_blob(handle_, column));
  return data ? std::string_view(data, sqlite3_column_bytes(handle_, column)) : std::string_view();
}

}  // namespace zlutil::settings::host
