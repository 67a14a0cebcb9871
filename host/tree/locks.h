// Locks of entries (service/locks.h). The caller of these functions holds the tree's lock().
#pragma once

#include "host/tree/node.h"
#include "service/locks.h"

namespace zlutil::settings::host {

// Returns the lock that counts for the entry.
std::optional<SettingLock> lockFor(const Entry& entry);

// Returns the reason why the entry's values at the level cannot be changed: the level is read-only,
// or the entry or a node above it is locked. Empty if they can. Narrow text.
std::string whyNotWritable(const Entry& entry, int level);

// Returns the level of the key's effective value; nothing if it has none.
std::optional<int> effectiveLevel(const Key& key);

}  // namespace zlutil::settings::host
