// The trees of the runtime contexts. Each is made at the first request for its context and lives as
// long as the process, so that listeners, handles and stores never outlive it. Any thread.
#pragma once

#include "host/os/directories.h"
#include "host/tree/node.h"

namespace zlutil::settings::host {

// Returns the root of a new tree of the context, filled from the directories. Reports unreadable
// files and entries (host/os/log_error.h) and leaves them out.
NodePtr makeContextTree(contextmgr::ZcrID context, const Directories& directories);

// Returns whether the settings of the process are kept in memory (service/testing.h).
bool areKeptInMemory();

}  // namespace zlutil::settings::host
