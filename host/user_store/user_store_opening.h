// Opening the database of a user store, which makes it where there is none and restores it where it
// is damaged. Any thread.
#pragma once

#include <memory>
#include <optional>

#include "host/user_store/user_database.h"
#include "host/user_store/user_store_files.h"

namespace zlutil::settings::host {

struct UserStoreOptions {
  std::string directory;  // bytes for the system
  std::uint64_t context;
  // How long a change waits for other processes, in milliseconds.
  int lockWait = 5000;
};

// Ready for reading and writing. The directory has to exist, and the caller holds `lock` alone.
// Waits for programs that do not know that lock for at most `lockWait` milliseconds. Throws
// SqliteError.
std::unique_ptr<UserDatabase> openUserDatabase(const UserStoreFiles& files, int lockWait,
                                               const UserStoreLock& lock);

// The identity of the database that stands there, without changing anything; nothing when it has
// none. Throws SqliteError.
std::optional<std::string> identityOf(const UserStoreFiles& files, int lockWait);

// What can be read where openUserDatabase has failed, because nothing can be written there. Throws
// SqliteError.
Changes readWithoutWriting(const UserStoreFiles& files, const UserDatabase::Report& report);

}  // namespace zlutil::settings::host
