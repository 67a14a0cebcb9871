// What is done about a damaged user store. Only under its UserStoreLock.
#pragma once

#include "host/settings/user_store_files.h"

namespace zlutil::settings::host {

// Keeps a copy of the damaged database and makes another that is to take its place: all that it
// held when all of it can still be read, else the newest backup that is in order, with whatever can
// be read over it. Says on standard error what was done, and why (`reason`, narrow text). `noted`
// is the last transaction that the stamp file knew of. Throws SqliteError.
void restoreUserStore(const UserStoreFiles& files, const std::string& reason, std::int64_t noted);

// Puts it there, and does the rest where this was interrupted. Throws SqliteError.
void putRestoredInPlace(const UserStoreFiles& files);

// Copies a database aside that is in order but lacks the last `missing` transactions, with its log,
// before anything is written to it. Says so on standard error. Throws SqliteError.
void keepCopyOfShortened(const UserStoreFiles& files, std::int64_t missing);

}  // namespace zlutil::settings::host
