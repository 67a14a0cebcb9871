// What is done about a damaged user store. Only under its UserStoreLock.
#pragma once

#include "host/settings/user_store_files.h"

namespace zlutil::settings::host {

// Sets the damaged database aside and puts another in its place: all that it held when all of it
// can still be read, else the newest backup that is in order, with whatever can be read over it.
// Says on standard error what was done, and why (`reason`, narrow text). Throws SqliteError.
void restoreUserStore(const UserStoreFiles& files, const std::string& reason);

}  // namespace zlutil::settings::host
