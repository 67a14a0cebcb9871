// Changes of the entries that a tree has: Entry::attachTo, and Node::copySubtree, removeKey and
// removeNode. The store of the user level keeps entries that were added at run time. Any thread.
#pragma once

#include "host/change/tree_edit.h"

namespace zlutil::settings::host {

// Returns `parent` as a node below which the entry, a detached one, can stand. Throws what
// Settings::attachTo throws.
NodePtr requireParent(const EntryPtr& entry, const boost::shared_ptr<Settings>& parent);

// Each throws what Settings::attachTo, or removeKey and removeNode, throw: if an entry of that name
// cannot be added below the parent, if an entry with `height` entries below it would stand too deep
// there, and if the entry, which the tree has, cannot be removed. The caller holds the tree's
// lock().
void checkNewEntry(const Node& parent, const std::string& name);
void checkDepth(const Node& parent, const std::string& name, int height);
void checkRemovable(const Entry& entry);

// Inserts an entry that no other thread knows, with all entries below it. Returns false, with
// nothing inserted, if external changes leave that impossible. Throws what Settings::attachTo
// throws.
bool tryInserting(TreeEdit& edit, Node& parent, const EntryPtr& entry);

// Removes the child, a key or a node, with all below it. Returns false, with nothing removed, if
// external changes have come in that leave that impossible, or after which `isWanted()` is false.
// Throws what Settings::removeKey and removeNode throw.
bool tryRemoving(TreeEdit& edit, Node& parent, const std::string& name, bool isKey,
                 const std::function<bool()>& isWanted);

}  // namespace zlutil::settings::host
