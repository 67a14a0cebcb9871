// Checks the rollback journal that a process leaves beside a database if it dies within a
// transaction, without changing anything. SQLite writes the journal's pages back as soon as it
// opens the database. It does not check whether they are pages of this database, and stops
// silently at a damaged one.
//
// The format is SQLite's: https://www.sqlite.org/fileformat2.html#the_rollback_journal
#pragma once

#include <string>

namespace zlutil::settings::host {

enum class JournalState {
  kEmpty,    // there is nothing to write back
  kWhole,    // every page can be written back
  kDamaged,  // a page is damaged or missing
  kForeign,  // it belongs to another database, or to another state of this one
};

// Names are bytes for the system. Takes a file that cannot be read for an empty one. Opens and
// closes the files, so the caller must hold the store's lock exclusively.
JournalState stateOfJournal(const std::string& journal, const std::string& database);

// Returns whether a write-ahead log, as earlier versions kept it, has content beside a database
// that keeps none. SQLite would apply it nevertheless.
bool isForeignLog(const std::string& log, const std::string& database);

}  // namespace zlutil::settings::host
