// Telling listeners of a change: on the topics of the entry concerned and of all its ancestors.
// Called on the thread that made the change, after it is visible and with no lock held. Any thread.
#pragma once

#include <vector>

#include "host/settings/node.h"

namespace zlutil::settings::host {

// The identities, among an entry's and its ancestors', that somebody may have subscribed to.
using Audience = std::vector<exchange::IDType>;

// Reads what the tree guards.
Audience audienceOf(const Entry& entry);

// The key's value changed.
void publishChange(const KeyPtr& key);

// The entry was added below `parent`.
void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry);

// The entry was removed from `parent`; `audience` is what it was while the entry stood there.
void publishRemoved(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                    const Audience& audience);

}  // namespace zlutil::settings::host
