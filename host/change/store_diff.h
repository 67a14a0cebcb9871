// Comparison of a tree with the whole content of a store, for when the changes are not known.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Returns the changes that make the tree below `root` agree with `stored` (definitions and values
// of the level, parents before children): removals of what is not stored, and then `stored` itself.
// The caller holds the tree's writer().
Changes diffWithStore(const Node& root, int level, const Changes& stored);

}  // namespace zlutil::settings::host
