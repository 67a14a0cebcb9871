#include "nativesettings/listener_delivery.h"

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "bridge/shared_object.h"
#include "nativesettings/paths.h"
#include "service/events.h"
#include "service/settings.h"
#include "values/java_helpers.h"

namespace nativesettings {

using jzi::ToJava::javaString;
using zlutil::settings::Settings;
using JavaReference = boost::shared_ptr<jobject>;

namespace {

// The events as Java numbers them (DeliveredEvent.java).
enum class EventNumber : jint { kChanged = 0, kAdded = 1, kRemoved = 2 };

// Says that an event's companion is this library's: a reference to its DeliveredEvent.
const char kOwner = 0;

// Describes the event to Java and has the listener make an event object of it and hear of it. Gives
// the description, a local reference; null when the listener has thrown.
jobject describeAndDeliver(JNIEnv* env, EventNumber number, const Settings& parent,
                           const Settings& subject, jobject listener, jobject source) {
  std::vector<std::string> names = getSettingPath(parent);
  names.push_back(subject.getName());
  jstring joined = javaString(env, getDotPath(names));
  if (!joined) return nullptr;
  return answers::deliver.object(env, listener, source, static_cast<jint>(number), joined,
                                 static_cast<jint>(names.size()),
                                 static_cast<jboolean>(!subject.isKey()));
}

// Local references end with the guard's frame. `parentOf` gives the node that the event happened
// in, or null: then nobody hears of it. The second listener leaves the description with the event
// for those after it; most events have one listener, which is spared the global reference.
template <class ParentOf>
void deliverSettingEvent(EventNumber number, const ParentOf& parentOf,
                         const JavaReference& listener, const zlutil::eventmgr::BaseEvent& event,
                         const JavaReference& sourceRef) {
  const jzi::JavaGuard guard;
  JNIEnv* env = guard.env();
  if (!env) return;
  jobject source = sourceRef ? *sourceRef : nullptr;
  auto& companion = event.companion();
  const bool isFirst = companion.owner != &kOwner;
  if (!isFirst && companion.object) {
    answers::deliverAgain.run(env, *listener, source,
                              *static_cast<const jobject*>(companion.object.get()));
  } else if (const boost::shared_ptr<Settings> parent = parentOf()) {
    jobject described =
        describeAndDeliver(env, number, *parent, *event.getObj(), *listener, source);
    if (isFirst) {
      companion = {&kOwner, {}};
    } else {
      companion.object = jzi::detail::makeSharedObject(env, described, &JNIEnv::NewGlobalRef,
                                                       &JNIEnv::DeleteGlobalRef);
    }
  }
  // A listener's exception is nobody's but its own.
  env->ExceptionClear();
}

}  // namespace

void onSettingChanged(const JavaReference& listener,
                      const zlutil::settings::SettingsValueChangeEvent& event,
                      const JavaReference& source) {
  deliverSettingEvent(
      EventNumber::kChanged, [&] { return event.getObj()->getParent(); }, listener, event, source);
}

void onSettingAdded(const JavaReference& listener,
                    const zlutil::settings::SettingsAddNodeEvent& event,
                    const JavaReference& source) {
  deliverSettingEvent(
      EventNumber::kAdded, [&] { return event.getParentObj(); }, listener, event, source);
}

void onSettingRemoved(const JavaReference& listener,
                      const zlutil::settings::SettingsRemoveNodeEvent& event,
                      const JavaReference& source) {
  deliverSettingEvent(
      EventNumber::kRemoved, [&] { return event.getParentObj(); }, listener, event, source);
}

}  // namespace nativesettings
