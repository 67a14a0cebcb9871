// Opening the database of a user store, which makes it where there is none and restores it where it
// is damaged. Any thread; processes that open at the same time wait for each other.
#pragma once

#include <memory>

#include "host/settings/user_database.h"
#include "host/settings/user_store_files.h"

namespace zlutil::settings::host {

struct UserStoreOptions {
  std::string directory;  // bytes for the system
  std::uint64_t context;
  // Whether the last commits before a power cut may be lost; a killed process loses none.
  bool relaxed = false;
  int busyTimeout = 5000;  // milliseconds
};

// Ready for reading and writing. The directory has to exist. Throws SqliteError.
std::unique_ptr<UserDatabase> openUserDatabase(const UserStoreFiles& files,
                                               const UserStoreOptions& options);

// What can be read where openUserDatabase has failed, because nothing can be written there. Throws
// SqliteError.
Changes readWithoutWriting(const UserStoreFiles& files, const UserDatabase::Report& report);

}  // namespace zlutil::settings::host
