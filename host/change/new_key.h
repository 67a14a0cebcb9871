// Addition of a key together with its first value, as one change (service/new_key.h). A key may
// wait for its first value; it then belongs to the thread that has attached it. Any thread.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Returns true if the entry is a key that now waits for its first value instead of being attached
// to `parent`.
bool waitsForValue(const EntryPtr& key, const NodePtr& parent);

// Returns the key of that name that waits on this thread to be added to `parent`, or null.
KeyPtr waitingKey(const Node& parent, const std::string& name);

// Adds the key, which no other thread knows, with its first value. Leaves the key unchanged if it
// throws.
void addWithValue(Node& parent, const KeyPtr& key, const boost::any& value,
                  const std::string& level);

}  // namespace zlutil::settings::host
