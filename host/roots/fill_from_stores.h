// Connects a new tree with its stores. One thread, before any other thread knows the tree.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Reads the content of all stores of the root's tree into the tree, and from then on brings
// external changes into it.
void fillFromStores(const NodePtr& root);

}  // namespace zlutil::settings::host
