// Comparing a tree with everything that a store holds, where what has changed is not known.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// What the tree below `root` has to do to agree with `stored` (definitions and values of the level,
// parents before children): removals of what is not stored, and then `stored` itself, of which the
// tree has much already. The caller holds the tree's writer().
Changes diffWithStore(const Node& root, int level, const Changes& stored);

}  // namespace zlutil::settings::host
