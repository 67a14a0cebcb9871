#include "service/events.h"

namespace zlutil::settings {
namespace {

// The text that topics begin with; it must not end in a digit, because an identity follows.
const std::string& constant(const char* text) { return *new std::string(text); }

}  // namespace

const std::string& SettingsValueChangeEvent::EventType() {
  static const std::string& type = constant("SettingsValueChangeEvent:");
  return type;
}

const std::string& SettingsAddNodeEvent::EventType() {
  static const std::string& type = constant("SettingsAddNodeEvent:");
  return type;
}

const std::string& SettingsRemoveNodeEvent::EventType() {
  static const std::string& type = constant("SettingsRemoveNodeEvent:");
  return type;
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
