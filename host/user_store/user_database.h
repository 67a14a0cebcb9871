// The database of the user store: its schema, its statements and its journal. Used by one thread at
// a time. Every error is thrown as a SqliteError.
//
//   definitions  one row per entry added at run time: path, 'node' or 'key', the key's type, the
//                validator: 'java' with its two strings, or 'script' with its text. A key that a
//                settings file defines without a type has a row 'type', with the type of its first
//                value
//   settings     one row per value: path, type, value (see sqlite_value.h)
//   set_aside    values that one of another type has replaced, after a settings file has changed
//                the type of the key; kept for people, and not read again
//   journal      one row per transaction: its revision, which grows by one, and a line per change:
//   a
//                sign and the path. Other processes read from it what has changed. Old rows are
//                removed
//   store        one row: the identity, by which a running process recognises its database
//   history      the earlier values, see history_table.h
//
// The schema's version is PRAGMA user_version, and PRAGMA application_id is kApplicationId.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "host/tree/store.h"
#include "host/user_store/history_table.h"
#include "host/user_store/value_writer.h"

namespace zlutil::settings::host {

inline constexpr int kUserSchemaVersion = 2;
inline constexpr std::int32_t kApplicationId = 0x6E736574;  // "nset"

// One line of the journal.
struct JournalEntry {
  enum Sign : char { kValue = '=', kDefine = '+', kRemove = 'x', kType = ':' };
  Sign sign;
  std::string path;
};

class UserDatabase {
 public:
  // Receives the path of each row that is left out, and the reason.
  using Report = std::function<void(const std::string& path, const std::string& reason)>;

  // The database must have the schema.
  explicit UserDatabase(std::unique_ptr<SqliteDatabase> database);

  // Records the history of all transactions from now on.
  void keepHistory(const HistoryLimits& limits) { limits_ = limits; }

  // Makes the schema in an empty database, and brings one of an earlier version up to this one.
  // Gives a database without an identity this one, or a new one if `identity` is empty.
  static void makeSchema(SqliteDatabase& database, const std::string& identity);

  // Appends the rows of a database with the schema to `contents`, parents before children, or
  // children first if `descending`. Reports and leaves out rows that are not understood. If it
  // throws, `contents` has the rows read so far.
  static void readDefinitions(SqliteDatabase& database, bool descending, const Report& report,
                              Changes& contents);
  static void readValues(SqliteDatabase& database, bool descending, const Report& report,
                         Changes& contents);
  // Reads the table set_aside, which a database of an earlier version lacks.
  static void readSetAside(SqliteDatabase& database, bool descending, const Report& report,
                           Changes& contents);

  // Returns all definitions and values, definitions first.
  Changes readAll(const Report& report);

  // A write transaction excludes all other writers; a read transaction sees one state.
  void beginWriting();
  void beginReading();
  void commit();
  void rollBack() noexcept;

  // Stores the changes. The caller must have begun a write transaction, as for the next three.
  void put(const Changes& changes);
  // Adds values, which must be PutValue, to the table set_aside.
  void putAside(const Changes& values);
  // Writes the changes of the transaction to the journal. Returns its revision.
  std::int64_t record(const Changes& changes);
  // Sets the last revision, and clears the journal, so that every process that has not read up to
  // there compares everything.
  void skipTo(std::int64_t revision);

  const std::string& identity() const { return identity_; }
  // Return the last revision, and the first one that the journal still has; 0 if there is none.
  std::int64_t lastRevision();
  std::int64_t firstRevision();
  // Returns the journal after `revision`, in order, without the revisions in `except` (ascending).
  std::vector<JournalEntry> journalAfter(std::int64_t revision,
                                         const std::vector<std::int64_t>& except);
  // Returns the changes that bring a tree up to date, for such entries of the journal.
  Changes changesFor(const std::vector<JournalEntry>& entries, const Report& report);

  // keepHistory() has been called.
  HistoryTable& history();

  // Returns a number that changes if, and only if, another connection changes the database.
  std::int64_t dataVersion();

  SqliteDatabase& connection() { return *database_; }

 private:
  void write(const EraseValue& change);
  void write(const DefineEntry& change);
  void write(const RemoveSubtree& change);
  void write(const FixKind& change);
  void addToJournal(std::int64_t revision, const std::string& changes);
  // Each returns nothing if there is nothing to change, and reports a row that is not understood.
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
  std::optional<HistoryLimits> limits_;
  std::optional<HistoryTable> history_;  // made at the first use
};

}  // namespace zlutil::settings::host
