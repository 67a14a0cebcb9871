// Publication of changes: on the topics of the entry concerned and of all its ancestors, and for a
// removal on those of all entries below it. The publishing functions are called after the change is
// visible, with no lock held. Any thread.
#pragma once

#include <boost/container/small_vector.hpp>
#include <utility>

#include "host/tree/node.h"

namespace zlutil::settings::host {

// The identities of the entries on whose topics an event is published. Entries without subscribers
// are left out; seldom more than a few are left.
using Audience = std::vector<exchange::IDType>;

// Returns the audience of an event about an entry that was added or changed. The caller holds the
// tree's lock().
Audience audienceOf(const Entry& entry);

// Returns the audience of a removal, which includes the entries below. The caller holds the tree's
// lock().
Audience audienceOfRemoval(const Entry& entry);

// The keys whose values one edit has changed, with their audiences. One thread at a time.
class ChangedKeys {
 public:
  // Adds a key, unless it has no audience, or there is no memory for it. The caller holds the
  // tree's lock().
  void add(Key& key) noexcept;

  // Publishes a change of each key, in the order in which they were added. Called once.
  void publish();

 private:
  boost::container::small_vector<std::pair<EntryPtr, Audience>, 1> heard_;
  // The parent of the last key, and the audience from there upwards: the next key mostly has the
  // same.
  const Node* parent_ = nullptr;
  Audience above_;
};

// Publishes a change of the key's value.
void publishChanged(EntryPtr key, const Audience& audience);

// Publishes that the entry was added below `parent`; without `audience`, to its present audience.
void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry);
void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                  const Audience& audience);

// Publishes that the entry was removed from `parent`; `audience` is from before the removal.
void publishRemoved(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                    const Audience& audience);

}  // namespace zlutil::settings::host
