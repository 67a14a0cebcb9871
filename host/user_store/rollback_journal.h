// The rollback journal that a process leaves beside a database when it dies in the middle of a
// transaction, read without changing anything. SQLite writes the pages in it back as soon as it
// opens the database. It does not ask whether they are pages of this one, and stops without a word
// where they are damaged.
//
// The format is SQLite's: https://www.sqlite.org/fileformat2.html#the_rollback_journal
#pragma once

#include <string>

namespace zlutil::settings::host {

enum class JournalState {
  kEmpty,    // nothing to write back
  kWhole,    // all that has to be written back is there
  kDamaged,  // something of it is not
  kForeign,  // it belongs to another database, or to another state of this one
};

// Names are bytes for the system. Files that cannot be read count as empty. It opens and closes the
// files, so the caller holds the store's lock alone.
JournalState stateOfJournal(const std::string& journal, const std::string& database);

// Whether a write-ahead log, as earlier versions kept it, has content beside a database that keeps
// none: SQLite would bring that in all the same.
bool isForeignLog(const std::string& log, const std::string& database);

}  // namespace zlutil::settings::host
