#include "service/events.h"

#include "base/never_destroyed.h"

namespace zlutil::settings {

// The topics of the events. None may end in a digit, because the identity of an entry follows.
const std::string& SettingsValueChangeEvent::EventType() {
  static base::NeverDestroyed<std::string> type("SettingsValueChangeEvent:");
  return type.get();
}

const std::string& SettingsAddNodeEvent::EventType() {
  static base::NeverDestroyed<std::string> type("SettingsAddNodeEvent:");
  return type.get();
}

const std::string& SettingsRemoveNodeEvent::EventType() {
  static base::NeverDestroyed<std::string> type("SettingsRemoveNodeEvent:");
  return type.get();
}

bool SettingsValueChangeEvent::isKindOf(const std::string& eventType) const {
  return eventType == EventType();
}

bool SettingsAddNodeEvent::isKindOf(const std::string& eventType) const {
  return eventType == EventType();
}

bool SettingsRemoveNodeEvent::isKindOf(const std::string& eventType) const {
  return eventType == EventType();
}

}  // namespace zlutil::settings
