// Changes that others have made to what a store holds, brought into the tree: made visible in one
// step and then published like changes of this process. Called on a thread of the store's.
#pragma once

#include "host/settings/node.h"

namespace zlutil::settings::host {

// Applies the changes that `source` gives at the level. They are stored already, so nothing is
// validated; a change that does not fit the tree (no such key, another kind, an entry that a file
// defines) is left out.
void applyForeignChanges(Node& root, int level, const Store::Source& source);

}  // namespace zlutil::settings::host
