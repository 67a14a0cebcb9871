// What is done about a damaged user store. Only under its UserStoreLock.
#pragma once

#include "host/settings/user_store_files.h"
#include "host/settings/user_store_stamp.h"

namespace zlutil::settings::host {

// Keeps a copy of the damaged database and puts another in its place: all that it held when all of
// it can still be read, else the newest backup that is in order, with whatever can be read over it.
// Says on standard error what was done, and why (`reason`, narrow text). Other processes commit
// nothing meanwhile; waiting for one that does takes at most `busyTimeout` milliseconds. Throws
// SqliteError.
void restoreUserStore(const UserStoreFiles& files, UserStoreStamp& stamp, const std::string& reason,
                      int busyTimeout);

// Does the rest where this was interrupted when the other database was complete. Throws
// SqliteError.
void putRestoredInPlace(const UserStoreFiles& files, UserStoreStamp& stamp);

// Copies a database aside that is in order but lacks the last `missing` transactions, with its log,
// before anything is written to it. Says so on standard error. Throws SqliteError.
void keepCopyOfShortened(const UserStoreFiles& files, std::int64_t missing);

}  // namespace zlutil::settings::host
