// The archive of a tree's user level. Any thread.
#pragma once

#include "host/tree/node.h"
#include "host/tree/store_archive.h"

namespace zlutil::settings::host {

// Returns the root of the entry's tree; null if the tree belongs to no context.
inline NodePtr rootOf(const boost::shared_ptr<Settings>& given) {
  const auto entry = boost::dynamic_pointer_cast<Entry>(given);
  return entry ? boost::static_pointer_cast<Node>(entry->tree().root()) : NodePtr();
}

// Returns null if the level keeps no archive, or there is no root.
inline StoreArchive* archiveOf(const NodePtr& root) {
  return root ? root->tree().store(kUser).archive() : nullptr;
}

}  // namespace zlutil::settings::host
