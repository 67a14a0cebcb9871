// A connection to one SQLite database, and the statements prepared on it. Each is used by one
// thread at a time; a statement borrows its connection. Every error is thrown as a SqliteError.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zlutil::settings::host {

// An error of SQLite, with the system's own text if it has one; narrow text.
class SqliteError : public std::runtime_error {
 public:
  SqliteError(int code, const std::string& reason) : std::runtime_error(reason), code_(code) {}

  // Returns the primary result code.
  int code() const { return code_ & 0xFF; }
  // Returns whether the file is not a database or a damaged one.
  bool isDamage() const { return code() == SQLITE_CORRUPT || code() == SQLITE_NOTADB; }

 private:
  const int code_;
};

// Returns the text of the error that a lock was not free within this time; narrow text.
std::string lockedText(std::chrono::milliseconds waited);

class SqliteDatabase {
 public:
  // Opens the file, with the flags of sqlite3_open_v2 (SQLITE_OPEN_READWRITE, ...). `name` is bytes
  // for the system. Waits for the locks of others for at most `lockWait` milliseconds.
  SqliteDatabase(const std::string& name, int flags, int lockWait);
  ~SqliteDatabase();
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  // Changes the longest wait for the locks of others.
  void setLockWait(int milliseconds) { lockWait_ = std::chrono::milliseconds(milliseconds); }

  void execute(const char* sql);
  // Returns the first column of the first row, as a number or as text; 0 or "" if there is no row.
  std::int64_t number(const char* sql);
  std::string text(const char* sql);
  // Switches the file to a rollback journal. Does nothing while another process has the file open
  // with a write-ahead log, as earlier versions did.
  void useRollbackJournal();
  // Copies the whole content to `target`, to its database of that name.
  void copyTo(SqliteDatabase& target, const char* name = "main");

  sqlite3* handle() const { return handle_; }
  // Returns the error of a call that has returned this code.
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

  // Moves to the next row. Returns false if there is none. Resets the statement if there is none,
  // and when it throws.
  bool step();
  // Runs the statement to its end.
  void run();
  // Runs the statement and returns the first column of its first row; 0 if there is no row.
  std::int64_t onlyNumber();
  void reset();

  // Return a column of the current row, counted from 0. The bytes are valid until the next step().
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
