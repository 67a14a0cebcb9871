// Applies changes by other processes to a tree: all of them become visible in one step. A thread of
// its own tells the listeners afterwards (external_events.h). Any thread.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Applies the changes at the level below `root`. They are stored already, so nothing is validated.
// A change that does not fit the tree (no such key, another kind, an entry that a file defines) is
// left out; a value or an entry that is left out is reported on standard error. The events are
// queued in the tree's ExternalEvents, if it has any. The caller holds the tree's writer(), or no
// other thread knows the tree.
void applyExternalChanges(Node& root, int level, const ExternalChanges& external);

// The same below the tree's root; does nothing if the root is gone.
void applyExternalChanges(Tree& tree, int level, const ExternalChanges& external);

// Reads and applies what other processes have changed in the level's store. The caller holds no
// lock.
void catchUp(Tree& tree, int level);

}  // namespace zlutil::settings::host
