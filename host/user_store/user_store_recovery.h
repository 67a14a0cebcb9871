// Restores a damaged user store. The caller must hold the store's UserStoreLock exclusively.
// Functions throw SqliteError.
#pragma once

#include <string>

#include "host/user_store/user_store_files.h"
#include "host/user_store/user_store_stamp.h"

namespace zlutil::settings::host {

// A copy of the database and of its journal or log, as they were found. The destructor removes it
// unless keep() was called: restoring may fail and be repeated every second.
class CopyAside {
 public:
  explicit CopyAside(const UserStoreFiles& files) : files_(files), name_(files.damaged()) {}
  ~CopyAside();
  CopyAside(const CopyAside&) = delete;
  CopyAside& operator=(const CopyAside&) = delete;

  const std::string& name() const { return name_; }
  // Copies and flushes the files that exist. Does nothing the second time.
  void make();
  bool isMade() const { return isMade_; }
  void keep();

 private:
  const UserStoreFiles& files_;
  const std::string name_;
  bool isMade_ = false, isKept_ = false;
};

// Keeps the copy of the damaged database and replaces the database. The new one has the whole
// content of the damaged one if all of it can be read, else the newest undamaged backup, over which
// everything readable is stored. Reports this on standard error with `reason` (narrow text). A
// database that has lost its identity gets `identity`.
void restoreUserStore(const UserStoreFiles& files, CopyAside& copy, UserStoreStamp& stamp,
                      const std::string& reason, const std::string& identity);

// Completes a restoreUserStore() that was interrupted after the new database was complete.
void putRestoredInPlace(const UserStoreFiles& files, UserStoreStamp& stamp);

// Renames a journal or a log that belongs to another database, or to another state of this one, so
// that SQLite does not apply it. Reports this on standard error.
void setForeignLogsAside(const UserStoreFiles& files);

// Reports on standard error that an undamaged database lacks the last `missing` transactions. Keeps
// the copy, if there is one.
void reportShortened(const UserStoreFiles& files, std::int64_t missing, CopyAside* copy);

}  // namespace zlutil::settings::host
