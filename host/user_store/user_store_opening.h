// Opens the database of a user store: makes it if there is none, and restores it if it is damaged.
// Any thread.
#pragma once

#include <memory>
#include <optional>

#include "host/user_store/user_database.h"
#include "host/user_store/user_store_files.h"

namespace zlutil::settings::host {

struct UserStoreOptions {
  std::string directory;  // bytes for the system
  std::uint64_t context;
  // The longest wait of a change for other processes, in milliseconds.
  int lockWait = 5000;
  HistoryLimits history = {};
};

// Opens the database for reading and writing. The directory must exist, and the caller must hold
// `lock` exclusively. Waits for programs that do not know the lock for at most `lockWait`
// milliseconds. Throws SqliteError.
std::unique_ptr<UserDatabase> openUserDatabase(const UserStoreFiles& files, int lockWait,
                                               const UserStoreLock& lock);

// Returns the identity of the database without changing anything, or nothing if it has none. Throws
// SqliteError.
std::optional<std::string> identityOf(const UserStoreFiles& files, int lockWait);

// Reads the database without writing, for when openUserDatabase has failed because nothing can be
// written. Throws SqliteError.
Changes readWithoutWriting(const UserStoreFiles& files, const UserDatabase::Report& report);

}  // namespace zlutil::settings::host
