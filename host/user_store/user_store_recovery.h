// What is done about a damaged user store. Only while holding its UserStoreLock alone. Functions
// throw SqliteError.
#pragma once

#include <string>

#include "host/user_store/user_store_files.h"
#include "host/user_store/user_store_stamp.h"

namespace zlutil::settings::host {

// A copy of the database and what stands beside it, as they were found. Removed again unless it is
// kept: who fails to restore may try again and again.
class CopyAside {
 public:
  explicit CopyAside(const UserStoreFiles& files) : files_(files), name_(files.damaged()) {}
  ~CopyAside();
  CopyAside(const CopyAside&) = delete;
  CopyAside& operator=(const CopyAside&) = delete;

  const std::string& name() const { return name_; }
  // Copies what there is, and flushes it; does nothing when there is nothing, or the second time.
  void make();
  bool isMade() const { return isMade_; }
  void keep();

 private:
  const UserStoreFiles& files_;
  const std::string name_;
  bool isMade_ = false, isKept_ = false;
};

// Keeps the copy of the damaged database and puts another in its place: all that it held when all
// of it can still be read, else the newest backup that is in order, with whatever can be read over
// it. Says on standard error what was done, and why (`reason`, narrow text). A database that has
// lost its identity gets `identity`.
void restoreUserStore(const UserStoreFiles& files, CopyAside& copy, UserStoreStamp& stamp,
                      const std::string& reason, const std::string& identity);

// Does the rest where this was interrupted when the other database was complete.
void putRestoredInPlace(const UserStoreFiles& files, UserStoreStamp& stamp);

// Renames a journal or a log that belongs to another database than the one it stands beside, or to
// another state of it, so that it is not brought in, and says so on standard error.
void setForeignLogsAside(const UserStoreFiles& files);

// Says on standard error that a database is in order but lacks the last `missing` transactions.
// Keeps the copy, if one is given.
void reportShortened(const UserStoreFiles& files, std::int64_t missing, CopyAside* copy);

}  // namespace zlutil::settings::host
