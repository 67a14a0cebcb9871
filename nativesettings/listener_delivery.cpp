#include "nativesettings/listener_delivery.h"

#include <algorithm>

#include "bridge/converters.h"
#include "bridge/shared_object.h"
#include "nativesettings/java_callback.h"
#include "service/events.h"
#include "service/settings.h"
#include "values/java_helpers.h"

namespace nativesettings {

using jzi::ToJava::javaString;
using zlutil::settings::Settings;
using zlutil::settings::SettingsEvent;
using JavaReference = boost::shared_ptr<jobject>;

namespace {

// The events as Java numbers them (DeliveredEvent.java).
enum class EventNumber : jint { kChanged = 0, kAdded = 1, kRemoved = 2 };

// Says that an event's companion is this library's: a reference to its DeliveredEvent.
const char kOwner = 0;

// Describes the event to Java and has the listener make an event object of it and hear of it. Gives
// the description, a local reference; null when the listener has thrown.
jobject describeAndDeliver(JNIEnv* env, EventNumber number, const SettingsEvent& event,
                           jobject listener, jobject source) {
  const std::string& place = event.getPlace();
  jstring javaPlace = javaString(env, place);
  if (!javaPlace) return nullptr;
  const auto above = static_cast<jint>(std::count(place.begin(), place.end(), '.'));
  return answers::deliver.object(env, listener, source, static_cast<jint>(number), javaPlace, above,
                                 static_cast<jboolean>(!event.getObj()->isKey()));
}

// The second listener leaves the description with the event for those after it; most events have
// one listener, which is spared the global reference. A listener's exception is nobody's but its
// own.
void deliverSettingEvent(EventNumber number, const boost::shared_ptr<Settings>& parent,
                         const JavaReference& listener, const SettingsEvent& event,
                         const JavaReference& sourceRef) {
  const JavaCallback callback;
  JNIEnv* env = callback.env();
  if (!env || !parent) return;
  jobject source = sourceRef ? *sourceRef : nullptr;
  auto& companion = event.companion();
  const bool isFirst = companion.owner != &kOwner;
  if (!isFirst && companion.object) {
    answers::deliverAgain.run(env, *listener, source,
                              *static_cast<const jobject*>(companion.object.get()));
    return;
  }
  jobject described = describeAndDeliver(env, number, event, *listener, source);
  if (isFirst) {
    companion = {&kOwner, {}};
  } else {
    companion.object = jzi::detail::makeSharedObject(env, described, &JNIEnv::NewGlobalRef,
                                                     &JNIEnv::DeleteGlobalRef);
  }
}

}  // namespace

void onSettingChanged(const JavaReference& listener,
                      const zlutil::settings::SettingsValueChangeEvent& event,
                      const JavaReference& source) {
  deliverSettingEvent(EventNumber::kChanged, event.getObj()->getParent(), listener, event, source);
}

void onSettingAdded(const JavaReference& listener,
                    const zlutil::settings::SettingsAddNodeEvent& event,
                    const JavaReference& source) {
  deliverSettingEvent(EventNumber::kAdded, event.getParentObj(), listener, event, source);
}

void onSettingRemoved(const JavaReference& listener,
                      const zlutil::settings::SettingsRemoveNodeEvent& event,
                      const JavaReference& source) {
  deliverSettingEvent(EventNumber::kRemoved, event.getParentObj(), listener, event, source);
}

}  // namespace nativesettings
