// Telling listeners of a change: on the topics of the entry concerned and of all its ancestors; of
// a removal on those of everything below the entry too. Called on the thread that made the change,
// after it is visible and with no lock held. Any thread.
#pragma once

#include <boost/container/small_vector.hpp>
#include <utility>

#include "host/tree/node.h"

namespace zlutil::settings::host {

// The entries on whose topics an event is published: those of the entry concerned and its ancestors
// that may have subscribers.
using Audience = std::vector<exchange::IDType>;

// Of an entry that has been added or changed. Reads what the tree guards.
Audience audienceOf(const Entry& entry);

// Of an entry that is to be removed: with those of all that goes with it. Reads what the tree
// guards.
Audience audienceOfRemoval(const Entry& entry);

// The keys whose values one operation has changed. Belongs to one thread.
class ChangedKeys {
 public:
  // Notes the key and who is to hear of it. Reads what the tree guards.
  void add(Key& key);

  // Tells them, in the order in which the keys were noted.
  void publish() const;

 private:
  // The keys that somebody may hear of; of the others nothing is kept.
  boost::container::small_vector<std::pair<KeyPtr, Audience>, 1> heard_;
  // The parent of the last key, which most often is that of the next one too, and who may hear of
  // it and of all that is below it.
  const Node* parent_ = nullptr;
  Audience above_;
};

// The key's value was changed.
void publishChanged(const EntryPtr& key, const Audience& audience);

// The entry was added below `parent`; without an audience, those who may hear of it now.
void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry);
void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                  const Audience& audience);

// The entry was removed from `parent`; `audience` is what it was while the entry stood there.
void publishRemoved(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                    const Audience& audience);

}  // namespace zlutil::settings::host
