// Keys with their first values, added in one step, and keys that wait for it (service/new_key.h).
// Any thread; what waits belongs to its thread.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Whether the key, which could be attached to `parent` now, is to wait for its first value.
bool waitsForValue(const EntryPtr& key, const NodePtr& parent);

// The key of that name that waits on this thread to be added to `parent`; null when there is none.
KeyPtr waitingKey(const Node& parent, const std::string& name);

// Adds the key, of which nobody else knows, with its first value. When it throws, the key is as it
// was.
void addWithValue(Node& parent, const KeyPtr& key, const boost::any& value,
                  const std::string& level);

}  // namespace zlutil::settings::host
