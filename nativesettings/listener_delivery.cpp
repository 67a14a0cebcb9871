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

// Has the first listener make an event object of the event and hear of it; leaves the description
// of the event with it, for the next listener.
void deliverFirst(JNIEnv* env, EventNumber number, const Settings& parent,
                  const zlutil::eventmgr::BaseEvent& event, jobject listener, jobject source) {
  const boost::shared_ptr<Settings> subject = event.getObj();
  const std::vector<std::string> path = getSettingPath(parent);
  jstring joined = javaString(env, getDotPath(path));
  jstring name = joined ? javaString(env, subject->getName()) : nullptr;
  if (!name) return;
  jobject delivered = answers::deliver.object(env, listener, source, static_cast<jint>(number),
                                              joined, static_cast<jint>(path.size()), name,
                                              static_cast<jboolean>(!subject->isKey()));
  // Null when the listener has thrown.
  if (JavaReference shared = jzi::detail::makeSharedObject(env, delivered, &JNIEnv::NewGlobalRef,
                                                           &JNIEnv::DeleteGlobalRef)) {
    event.companion() = {&kOwner, shared};
  }
}

// Local references end with the guard's frame. `parentOf` gives the node that the event happened
// in, or null: then nobody hears of it.
template <class ParentOf>
void deliverSettingEvent(EventNumber number, const ParentOf& parentOf,
                         const JavaReference& listener, const zlutil::eventmgr::BaseEvent& event,
                         const JavaReference& sourceRef) {
  const jzi::JavaGuard guard;
  JNIEnv* env = guard.env();
  if (!env) return;
  jobject source = sourceRef ? *sourceRef : nullptr;
  const auto& companion = event.companion();
  if (companion.owner == &kOwner) {
    answers::deliverAgain.run(env, *listener, source,
                              *static_cast<const jobject*>(companion.object.get()));
  } else if (const boost::shared_ptr<Settings> parent = parentOf()) {
    deliverFirst(env, number, *parent, event, *listener, source);
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
