// The trees of the runtime contexts. Each is made when its context is asked for first, and lives as
// long as the process, so that listeners, handles and stores never outlive it. Any thread.
#pragma once

#include "host/os/directories.h"
#include "host/tree/node.h"

namespace zlutil::settings::host {

// The root of a new tree of that context, filled from the directories. What cannot be read is
// reported on standard error and left out.
NodePtr makeContextTree(contextmgr::ZcrID context, const Directories& directories);

}  // namespace zlutil::settings::host
