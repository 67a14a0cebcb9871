// The database of the user store: its schema, its statements, and the changes that it holds. Used
// by one thread at a time. Every error is a SqliteError.
//
//   definitions  one row per entry added at run time: path, 'node' or 'key', the key's type, the
//                validator: 'java' with its two strings, or 'script' with its text. A key that a
//                file defines without a type has a row 'type', which keeps the type of its first
//                value
//   settings     one row per value: path, type, value (see sqlite_value.h)
//   set_aside    values of another type than the one that has replaced them, because a settings
//                file has changed the type of the key: nothing reads them but people
//   journal      one row per transaction: a number that grows by one, and a line per change: a sign
//                and the path. Other processes learn from it what to read again. Old rows go.
//   store        one row: the identity, by which a running process knows its database again
//
// The schema's version is PRAGMA user_version, and PRAGMA application_id is kApplicationId.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "host/tree/store.h"
#include "host/user_store/sqlite_database.h"
#include "host/user_store/value_writer.h"

namespace zlutil::settings::host {

inline constexpr int kUserSchemaVersion = 1;
inline constexpr std::int32_t kApplicationId = 0x6E736574;  // "nset"

// Changes that others have made, in the words of the journal.
struct JournalEntry {
  enum Sign : char { kValue = '=', kDefine = '+', kRemove = 'x', kType = ':' };
  Sign sign;
  std::string path;
};

class UserDatabase {
 public:
  // Gets told of what is left out: the path and the reason.
  using Report = std::function<void(const std::string& path, const std::string& reason)>;

  // A database that has the schema already.
  explicit UserDatabase(std::unique_ptr<SqliteDatabase> database);

  // Makes the schema in an empty database, and what it lacks in one of an earlier version. A
  // database that has no identity gets this one, or a new one when it is empty.
  static void makeSchema(SqliteDatabase& database, const std::string& identity);

  // Adds to `contents` what a database with the schema holds, parents before children, or the other
  // way round when `descending`. What cannot be understood is left out. When it throws, what has
  // been read so far is there.
  static void readDefinitions(SqliteDatabase& database, bool descending, const Report& report,
                              Changes& contents);
  static void readValues(SqliteDatabase& database, bool descending, const Report& report,
                         Changes& contents);
  // Values in the table set_aside, which a database of an earlier version does not have.
  static void readSetAside(SqliteDatabase& database, bool descending, const Report& report,
                           Changes& contents);

  // Everything that it holds, definitions first.
  Changes readAll(const Report& report);

  // A write transaction has the database for itself; a read transaction sees one moment.
  void beginWriting();
  void beginReading();
  void commit();
  void rollBack() noexcept;

  // Within a write transaction.
  void put(const Changes& changes);
  // Adds values (PutValue) to the table set_aside.
  void putAside(const Changes& values);
  // Notes in the journal what the transaction has done; gives its number.
  std::int64_t record(const Changes& changes);

  // Within a write transaction: makes `revision` the number of the last one, and has every process
  // that has not read all since then compare everything.
  void skipTo(std::int64_t revision);

  const std::string& identity() const { return identity_; }
  // The number of the last transaction, and of the first one that the journal still has; 0 and 0
  // when there was none.
  std::int64_t lastRevision();
  std::int64_t firstRevision();
  // What the transactions after `revision` have done, in order, without those numbered in `except`
  // (ascending).
  std::vector<JournalEntry> journalAfter(std::int64_t revision,
                                         const std::vector<std::int64_t>& except);
  // What the tree has to do now because of such entries.
  Changes changesFor(const std::vector<JournalEntry>& entries, const Report& report);

  // A number that changes when, and only when, another connection has changed the database.
  std::int64_t dataVersion();

  SqliteDatabase& connection() { return *database_; }

 private:
  void write(const EraseValue& change);
  void write(const DefineEntry& change);
  void write(const RemoveSubtree& change);
  void write(const FixKind& change);
  void note(std::int64_t revision, const std::string& changes);
  // Each returns nothing if there is nothing to change; reports a row that is not understood.
  std::optional<Change> changeFor(const JournalEntry& entry, const Report& report);
  std::optional<Change> storedDefinition(const std::string& path, const Report& report);
  std::optional<Change> storedType(const std::string& path, const Report& report);
  std::optional<Change> storedValue(const std::string& path, const Report& report);

  const std::unique_ptr<SqliteDatabase> database_;
  const std::string identity_;
  SqliteStatement beginWriting_, beginReading_, commit_, rollBack_;
  ValueWriter values_;
  SqliteStatement eraseValue_, keepType_, define_, fixType_, addType_;
  SqliteStatement removeDefinitions_, removeValues_;
  SqliteStatement record_, prune_, lastRevision_, firstRevision_, journalAfter_;
  SqliteStatement findValue_, findDefinition_, dataVersion_;
};

}  // namespace zlutil::settings::host
