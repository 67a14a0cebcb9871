#include "nativesettings/listener_delivery.h"

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/paths.h"
#include "service/events.h"
#include "service/settings.h"
#include "values/java_helpers.h"

namespace nativesettings {

using jzi::ToJava::javaString;
using zlutil::settings::Settings;
using JavaReference = boost::shared_ptr<jobject>;

namespace {

// The events as Java numbers them (Answers.java).
enum class EventNumber : jint { kChanged = 0, kAdded = 1, kRemoved = 2 };

// Has the listener make an event object of the event and hear of it. Local references end with the
// guard's frame.
void deliverSettingEvent(EventNumber number, const Settings& parent, const JavaReference& listener,
                         const zlutil::eventmgr::BaseEvent& event, const JavaReference& source) {
  const jzi::JavaGuard guard;
  JNIEnv* env = guard.env();
  if (!env) return;
  const boost::shared_ptr<Settings> subject = event.getObj();
  const std::vector<std::string> path = getSettingPath(parent);
  jstring joined = javaString(env, getDotPath(path));
  jstring name = joined ? javaString(env, subject->getName()) : nullptr;
  if (name) {
    answers::deliver.run(env, static_cast<jint>(number), *listener, source ? *source : nullptr,
                         joined, static_cast<jint>(path.size()), name,
                         static_cast<jboolean>(!subject->isKey()));
  }
  // A listener's exception is nobody's but its own.
  env->ExceptionClear();
}

}  // namespace

void onSettingChanged(const JavaReference& listener,
                      const zlutil::settings::SettingsValueChangeEvent& event,
                      const JavaReference& source) {
  const boost::shared_ptr<Settings> parent = event.getObj()->getParent();
  if (!parent) return;
  deliverSettingEvent(EventNumber::kChanged, *parent, listener, event, source);
}

void onSettingAdded(const JavaReference& listener,
                    const zlutil::settings::SettingsAddNodeEvent& event,
                    const JavaReference& source) {
  deliverSettingEvent(EventNumber::kAdded, *event.getParentObj(), listener, event, source);
}

void onSettingRemoved(const JavaReference& listener,
                      const zlutil::settings::SettingsRemoveNodeEvent& event,
                      const JavaReference& source) {
  deliverSettingEvent(EventNumber::kRemoved, *event.getParentObj(), listener, event, source);
}

}  // namespace nativesettings
