// Connects a new tree with its stores. One thread, before anyone else knows the tree.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Reads everything that the stores of the root's tree hold into it, and has them report what others
// change from then on.
void fillFromStores(const NodePtr& root);

}  // namespace zlutil::settings::host
