// The history of a user store: the table `history` of its database. Each commit adds rows to it
// within its own transaction: one for the commit, and after it one for each change of a value, and
// for each entry that was added or removed.
//
//   id                  the commit's revision times 2^28; the rows of its changes follow
//   time, process, program, comment
//                       of the commit, the time in microseconds since 1970
//   change              'commit'; 'set' for a value; 'add' or 'remove' for an entry
//   path                of the entry
//   old_type, old, new_type, new
//                       of a value: as in the table `settings`, null for no value
//   entry, type, validator, first, second
//                       of an entry: as in the table `definitions`
//
// Triggers of the connection write the rows of changes, so no change can be left out, and another
// program that opens the database runs none of them. Used by one thread at a time. Throws
// SqliteError.
#pragma once

#include "host/tree/store_archive.h"
#include "host/user_store/sqlite_database.h"

namespace zlutil::settings::host {

// The commits that are kept. The newest one is kept in any case, unless `commits` is 0: then
// nothing is recorded.
struct HistoryLimits {
  int commits = 1000;
  int days = 90;
  std::int64_t bytes = 16 << 20;  // of paths and values
};

class HistoryTable {
 public:
  // The database must have the table.
  HistoryTable(SqliteDatabase& database, const HistoryLimits& limits);

  static void makeSchema(SqliteDatabase& database);

  // Makes the triggers of this connection, the first time. Called outside of transactions.
  void connect();

  // Begins the record of the commit that this write transaction will be. Changes from now on belong
  // to it. connect() has been called. Removes commits that are beyond the limits, now and then.
  void begin(std::int64_t revision);

  // Returns the commits from this revision on, oldest first. Rows that are not understood are left
  // out.
  std::vector<PastCommit> commitsFrom(std::int64_t revision);

 private:
  std::int64_t firstToKeep();
  void prune();
  std::int64_t pagesInUse();

  SqliteDatabase& database_;
  const HistoryLimits limits_;
  bool hasTriggers_ = false;
  std::int64_t prunedPages_ = 0;  // in use when it was pruned
  SqliteStatement begin_, sizes_, pageCount_, freePages_, prune_, read_;
};

}  // namespace zlutil::settings::host
