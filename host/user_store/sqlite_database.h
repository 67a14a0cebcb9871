// A connection to one SQLite database and the statements prepared on it. Either belongs to one
// thread at a time; a statement borrows its connection. Every error is a SqliteError.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zlutil::settings::host {

// What went wrong, in the words of the system where it has any; narrow text.
class SqliteError : public std::runtime_error {
 public:
  SqliteError(int code, const std::string& reason) : std::runtime_error(reason), code_(code) {}

  // The primary result code.
  int code() const { return code_ & 0xFF; }
  // Whether the file does not hold what a database has to.
  bool isDamage() const { return code() == SQLITE_CORRUPT || code() == SQLITE_NOTADB; }

 private:
  const int code_;
};

// The reason for giving up on a lock after so many milliseconds; narrow text.
std::string lockedText(std::chrono::milliseconds waited);

class SqliteDatabase {
 public:
  // Opens the file, with the flags of sqlite3_open_v2 (SQLITE_OPEN_READWRITE, ...). `name` is bytes
  // for the system. Waits for a lock of somebody else's for at most `lockWait` milliseconds.
  SqliteDatabase(const std::string& name, int flags, int lockWait);
  ~SqliteDatabase();
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  // From now on waits for at most so many milliseconds.
  void setLockWait(int milliseconds) { lockWait_ = std::chrono::milliseconds(milliseconds); }

  void execute(const char* sql);
  // The first column of the first row of the result, as a number and as text.
  std::int64_t number(const char* sql);
  std::string text(const char* sql);
  // Has a rollback journal kept beside the file. Does nothing while another process has the file
  // open with a write-ahead log, as earlier versions did; the log then goes on.
  void useRollbackJournal();
  // Copies the whole content to another database.
  void copyTo(SqliteDatabase& target);

  sqlite3* handle() const { return handle_; }
  // What a call has failed of that gave this code.
  SqliteError error(int code) const;
  [[noreturn]] void fail(int code) const { throw error(code); }

 private:
  static int waitForLock(void* self, int times);

  std::chrono::milliseconds lockWait_;
  std::chrono::steady_clock::time_point waitingUntil_;
  sqlite3* handle_ = nullptr;
};

class SqliteStatement {
 public:
  SqliteStatement(SqliteDatabase& database, const std::string& sql);
  ~SqliteStatement();
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  // Parameters count from 1. Bytes are borrowed until the statement is reset.
  void bind(int parameter, std::int64_t number);
  void bindText(int parameter, std::string_view utf8);
  void bindBlob(int parameter, std::string_view bytes);
  void bindNull(int parameter);

  // True with a row to read, false when there are no more; then, and when it throws, the statement
  // is reset.
  bool step();
  // Runs a statement that gives no rows.
  void run();
  // Runs a statement and gives the first column of its first row; 0 when there is none.
  std::int64_t onlyNumber();
  void reset();

  // Columns of the present row count from 0; bytes are valid until the next step.
  bool isNull(int column) const;
  bool isBlob(int column) const;
  std::int64_t number(int column) const;
  std::string_view bytes(int column) const;

 private:
  void check(int code) const;

  SqliteDatabase& database_;
  sqlite3_stmt* handle_ = nullptr;
};

}  // namespace zlutil::settings::host
