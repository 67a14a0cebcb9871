// Changes that others have made to what a store holds, brought into the tree: made visible in one
// step, and then told like changes of this process, by a thread that waits for nobody (see
// external_events.h). Any thread.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Applies the changes at the level. They are stored already, so nothing is validated. One that does
// not fit the tree (no such key, another kind, an entry that a file defines) is left out; of a
// value or an entry, standard error says so. What is to be told is noted, and told when somebody
// says TellOfOthers. The caller holds the tree's writer(), or is the only one who knows the tree.
void applyExternalChanges(Node& root, int level, const ExternalChanges& external);

// The same below the tree's root; nothing happens when that is gone.
void applyExternalChanges(Tree& tree, int level, const ExternalChanges& external);

// Brings in what the level's store has to give. With no lock held.
void catchUp(Tree& tree, int level);

}  // namespace zlutil::settings::host
