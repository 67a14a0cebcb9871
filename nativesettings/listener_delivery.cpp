#include "nativesettings/listener_delivery.h"

#include <atomic>

#include "bridge/class_slot.h"
#include "bridge/converters.h"
#include "nativesettings/java_callback.h"
#include "nativesettings/paths.h"
#include "service/events.h"
#include "service/settings.h"

namespace nativesettings {

using zlutil::settings::Settings;
using JavaReference = boost::shared_ptr<jobject>;

namespace {

std::atomic<jclass> listenerClass{nullptr};
std::atomic<jmethodID> createEventID{nullptr};
std::atomic<jmethodID> settingChangedID{nullptr};
std::atomic<jmethodID> settingAddedID{nullptr};
std::atomic<jmethodID> settingRemovedID{nullptr};

constexpr const char* kCreateEventSignature =
    "(Ljava/lang/Object;[Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Z)"
    "Lcom/velonix/services/settings/SettingChangeEvent;";
constexpr const char* kListenerSignature = "(Lcom/velonix/services/settings/SettingChangeEvent;)V";

// Returns the event object that the listener makes of an event; null if it makes none, or throws.
jobject createEvent(JNIEnv* env, jclass cls, jobject listener, jobject source,
                    const boost::shared_ptr<Settings>& parent, const Settings& subject) {
  jmethodID id =
      jzi::safeGetMethodID(env, cls, createEventID, "createEvent", kCreateEventSignature);
  jobjectArray path = id ? getSettingPathAsJArray(env, parent) : nullptr;
  jstring name = path ? jzi::ToJava::javaString(env, subject.getName()) : nullptr;
  if (!name) return nullptr;
  const auto isNode = static_cast<jboolean>(!subject.isKey());
  constexpr jobject kReserved = nullptr;
  jobject event = env->CallObjectMethod(listener, id, source, path, name, kReserved, isNode);
  return env->ExceptionCheck() ? nullptr : event;
}

// Hands one event to one method of the listener. An event without a parent is not delivered.
void deliverSettingEvent(const char* method, std::atomic<jmethodID>& methodID,
                         const boost::shared_ptr<Settings>& parent, const JavaReference& listener,
                         const zlutil::eventmgr::BaseEvent& event, const JavaReference& source) {
  const JavaCallback callback;
  JNIEnv* env = callback.env();
  if (!env || !parent) return;
  jclass cls =
      jzi::safeFindClass(env, listenerClass, "com/velonix/services/settings/SettingListener");
  jobject object =
      createEvent(env, cls, *listener, source ? *source : nullptr, parent, *event.getObj());
  jmethodID id =
      object ? jzi::safeGetMethodID(env, cls, methodID, method, kListenerSignature) : nullptr;
  // The callback ends an exception of the listener.
  if (id) env->CallVoidMethod(*listener, id, object);
}

}  // namespace

void onSettingChanged(const JavaReference& listener,
                      const zlutil::settings::SettingsValueChangeEvent& event,
                      const JavaReference& source) {
  deliverSettingEvent("settingChanged", settingChangedID, event.getObj()->getParent(), listener,
                      event, source);
}

void onSettingAdded(const JavaReference& listener,
                    const zlutil::settings::SettingsAddNodeEvent& event,
                    const JavaReference& source) {
  deliverSettingEvent("settingAdded", settingAddedID, event.getParentObj(), listener, event,
                      source);
}

void onSettingRemoved(const JavaReference& listener,
                      const zlutil::settings::SettingsRemoveNodeEvent& event,
                      const JavaReference& source) {
  deliverSettingEvent("settingRemoved", settingRemovedID, event.getParentObj(), listener, event,
                      source);
}

void forgetDeliveryIdentifiers() {
  jzi::releaseClass(GetJNIEnvR(), listenerClass);
  createEventID = nullptr;
  settingChangedID = nullptr;
  settingAddedID = nullptr;
  settingRemovedID = nullptr;
}

}  // namespace nativesettings
