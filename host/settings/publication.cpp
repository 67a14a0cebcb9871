#include "host/settings/publication.h"

#include "service/events.h"

namespace zlutil::settings::host {
namespace {

template <class Event>
void publish(const Audience& audience, const Event& event) {
  for (const exchange::IDType id : audience) {
    eventmgr::EventMgr::instance().publish(Event::EventType(), id, event);
  }
}

void addAllBelow(const Entry& entry, Audience& audience) {
  if (entry.isKey()) return;
  for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
    if (eventmgr::EventMgr::instance().mayHaveSubscribers(child->getID())) {
      audience.push_back(child->getID());
    }
    addAllBelow(*child, audience);
  }
}

Audience lockedAudienceOf(const Entry& entry) {
  ReadLock lock(entry.tree().lock());
  return audienceOf(entry);
}

}  // namespace

Audience audienceOf(const Entry& entry) {
  const eventmgr::EventMgr& events = eventmgr::EventMgr::instance();
  Audience audience;
  for (const Entry* at = &entry; at; at = at->parent()) {
    if (events.mayHaveSubscribers(at->getID())) audience.push_back(at->getID());
  }
  return audience;
}

Audience audienceOfRemoval(const Entry& entry) {
  Audience audience = audienceOf(entry);
  addAllBelow(entry, audience);
  return audience;
}

void ChangedKeys::add(Key& key) {
  if (key.parent() != parent_) {
    parent_ = key.parent();
    above_ = parent_ ? audienceOf(*parent_) : Audience();
  }
  const bool hasOwn = eventmgr::EventMgr::instance().mayHaveSubscribers(key.getID());
  if (!hasOwn && above_.empty()) return;
  Audience audience;
  audience.reserve(above_.size() + 1);
  if (hasOwn) audience.push_back(key.getID());
  audience.insert(audience.end(), above_.begin(), above_.end());
  heard_.emplace_back(boost::static_pointer_cast<Key>(key.shared_from_this()), std::move(audience));
}

void ChangedKeys::publish() const {
  for (const auto& [key, audience] : heard_) host::publish(audience, SettingsValueChangeEvent(key));
}

void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry) {
  const Audience audience = lockedAudienceOf(*entry);
  if (!audience.empty()) publish(audience, SettingsAddNodeEvent(parent, entry));
}

void publishRemoved(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                    const Audience& audience) {
  if (!audience.empty()) publish(audience, SettingsRemoveNodeEvent(parent, entry));
}

}  // namespace zlutil::settings::host
