#include "host/settings/publication.h"

#include "service/events.h"

namespace zlutil::settings::host {
namespace {

using Ids = std::vector<exchange::IDType>;

template <class Event>
void publish(const Ids& audience, const Event& event) {
  for (const exchange::IDType id : audience) {
    eventmgr::EventMgr::instance().publish(Event::EventType(), id, event);
  }
}

// Those of the entry and its ancestors that somebody may have subscribed to.
Ids subscribedUpFrom(const Entry& entry) {
  const eventmgr::EventMgr& events = eventmgr::EventMgr::instance();
  Ids ids;
  for (const Entry* at = &entry; at; at = at->parent()) {
    if (events.mayHaveSubscribers(at->getID())) ids.push_back(at->getID());
  }
  return ids;
}

void addAllBelow(const Entry& entry, Ids& ids) {
  if (entry.isKey()) return;
  for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
    if (eventmgr::EventMgr::instance().mayHaveSubscribers(child->getID())) {
      ids.push_back(child->getID());
    }
    addAllBelow(*child, ids);
  }
}

// Reads what the tree guards.
Audience audience(const Entry& entry, Ids ids) {
  std::string place = ids.empty() ? std::string() : entry.place();
  return {std::move(ids), std::move(place)};
}

Audience audienceOfAddition(const Entry& entry) {
  ReadLock lock(entry.tree().lock());
  return audience(entry, subscribedUpFrom(entry));
}

}  // namespace

Audience audienceOfRemoval(const Entry& entry) {
  Ids ids = subscribedUpFrom(entry);
  addAllBelow(entry, ids);
  return audience(entry, std::move(ids));
}

void ChangedKeys::add(Key& key) {
  if (key.parent() != parent_) {
    parent_ = key.parent();
    above_ = parent_ ? subscribedUpFrom(*parent_) : Ids();
  }
  const bool hasOwn = eventmgr::EventMgr::instance().mayHaveSubscribers(key.getID());
  if (!hasOwn && above_.empty()) return;
  Ids ids;
  ids.reserve(above_.size() + 1);
  if (hasOwn) ids.push_back(key.getID());
  ids.insert(ids.end(), above_.begin(), above_.end());
  heard_.emplace_back(boost::static_pointer_cast<Key>(key.shared_from_this()),
                      audience(key, std::move(ids)));
}

void ChangedKeys::publish() const {
  for (const auto& [key, audience] : heard_) {
    host::publish(audience.ids, SettingsValueChangeEvent(key, audience.place));
  }
}

void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry) {
  const Audience audience = audienceOfAddition(*entry);
  if (audience.empty()) return;
  publish(audience.ids, SettingsAddNodeEvent(parent, entry, audience.place));
}

void publishRemoved(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                    const Audience& audience) {
  if (audience.empty()) return;
  publish(audience.ids, SettingsRemoveNodeEvent(parent, entry, audience.place));
}

}  // namespace zlutil::settings::host
