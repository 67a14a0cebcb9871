// Undoing a commit of the user level, as one change of the tree. Any thread.
#pragma once

#include "host/tree/node.h"
#include "host/tree/store_archive.h"

namespace zlutil::settings::host {

// Changes back what the commit of that number in the archive has changed, below the root of the
// archive's tree. Returns the problems, as undoCommit() of service/history.h. Throws StoreFailure.
SettingsProblems undo(Node& root, StoreArchive& archive, std::int64_t number, bool isForced);

}  // namespace zlutil::settings::host
