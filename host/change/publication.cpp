#include "host/change/publication.h"

#include <new>

#include "service/events.h"

namespace zlutil::settings::host {
namespace {

template <class Event>
void publish(const Audience& audience, const Event& event) {
  for (const exchange::IDType id : audience) {
    eventmgr::EventMgr::instance().publish(Event::EventType(), id, event);
  }
}

void addAllBelow(const Entry& entry, Audience& ids) {
  if (entry.isKey()) return;
  for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
    if (eventmgr::EventMgr::instance().mayHaveSubscribers(child->getID())) {
      ids.push_back(child->getID());
    }
    addAllBelow(*child, ids);
  }
}

}  // namespace

Audience audienceOf(const Entry& entry) {
  const eventmgr::EventMgr& events = eventmgr::EventMgr::instance();
  Audience ids;
  for (const Entry* at = &entry; at; at = at->parent()) {
    if (events.mayHaveSubscribers(at->getID())) ids.push_back(at->getID());
  }
  return ids;
}

Audience audienceOfRemoval(const Entry& entry) {
  Audience audience = audienceOf(entry);
  addAllBelow(entry, audience);
  return audience;
}

void ChangedKeys::add(Key& key) noexcept {
  try {
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
    heard_.emplace_back(key.shared_from_this(), std::move(audience));
  } catch (const std::bad_alloc&) {
    parent_ = nullptr;
  }
}

void ChangedKeys::publish() {
  for (auto& [key, audience] : heard_) publishChanged(std::move(key), audience);
}

void publishChanged(EntryPtr key, const Audience& audience) {
  publish(audience, SettingsValueChangeEvent(std::move(key)));
}

void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry) {
  Audience audience;
  {
    ReadLock lock(entry->tree().lock());
    audience = audienceOf(*entry);
  }
  if (!audience.empty()) publishAdded(parent, entry, audience);
}

void publishAdded(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                  const Audience& audience) {
  publish(audience, SettingsAddNodeEvent(parent, entry));
}

void publishRemoved(const boost::shared_ptr<Settings>& parent, const EntryPtr& entry,
                    const Audience& audience) {
  if (audience.empty()) return;
  publish(audience, SettingsRemoveNodeEvent(parent, entry));
}

}  // namespace zlutil::settings::host
