// Changes of what entries there are. The same way as for values: checked, stored, made visible,
// published; the store of the user level keeps what was added at run time. Any thread.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// The node below which the entry, a detached one, can stand. Throws what Settings::attachTo throws.
NodePtr requirePlace(const EntryPtr& entry, const boost::shared_ptr<Settings>& parent);

// Adds an entry that nobody else knows, with all that is below it. The caller publishes it. Throws
// what Settings::attachTo throws.
void insertEntry(Node& parent, const EntryPtr& entry);

// Settings::attachTo.
void attachEntry(const EntryPtr& entry, const boost::shared_ptr<Settings>& parent);

// Settings::copySubtree.
void copyEntries(Node& parent, const boost::shared_ptr<Settings>& source, const std::string& name);

// Settings::removeKey and removeNode.
void removeEntry(Node& parent, const std::string& name, bool isKey);

}  // namespace zlutil::settings::host
