// Makes a tree from its stores. Any thread.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Reads the content of all stores of the root's tree into the tree, and from then on brings
// external changes into it. No other thread knows the tree.
void fillFromStores(const NodePtr& root);

// Returns the root of a new tree of the context with the content of the stores. Throws what a
// store's readAll() throws.
NodePtr makeTree(contextmgr::ZcrID context, const Tree::Stores& stores);

}  // namespace zlutil::settings::host
