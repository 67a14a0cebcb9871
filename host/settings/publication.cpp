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

void publishChange(const KeyPtr& key) {
  const Audience audience = lockedAudienceOf(*key);
  if (!audience.empty()) publish(audience, SettingsValueChangeEvent(key));
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
