#include "nativesettings/lane_listeners.h"

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include "bridge/converters.h"
#include "bridge/shared_object.h"
#include "nativesettings/frame.h"
#include "nativesettings/handles.h"
#include "nativesettings/java_callback.h"
#include "nativesettings/native_row.h"
#include "nativesettings/paths.h"
#include "service/events.h"
#include "service/settings.h"

namespace nativesettings {
namespace {

using namespace zlutil::settings;
using zlutil::eventmgr::ScopedConnection;
using SettingsPtr = boost::shared_ptr<Settings>;

enum class EventNumber : jint { kChanged = 0, kAdded = 1, kRemoved = 2 };

constexpr const char* kDeliverSignature = "(I[Ljava/lang/String;Ljava/lang/String;ZZ)V";

// An entry that is listened to, and the Java object that receives its events. Shared by its
// subscriptions; constant after construction. Keeps no entry alive.
struct Target {
  boost::weak_ptr<Settings> entry;
  const Settings* address;  // of the entry; compared only
  const Settings* root;     // compared only
  boost::shared_ptr<jobject> listener;
  jmethodID deliver;  // of the listener's class, which the listener keeps alive

  // Returns whether the entry is still below the root.
  bool isInTree() const {
    SettingsPtr top = entry.lock();
    if (!top) return false;
    while (const SettingsPtr parent = top->getParent()) top = parent;
    return top.get() == root;
  }
};
using TargetPtr = boost::shared_ptr<const Target>;

void deliver(JNIEnv* env, const Target& target, EventNumber number, jobjectArray path, jstring name,
             bool isNode, bool gone) {
  env->CallVoidMethod(*target.listener, target.deliver, static_cast<jint>(number), path, name,
                      static_cast<jboolean>(isNode), static_cast<jboolean>(gone));
}

void onEvent(const Target& target, EventNumber number, const SettingsPtr& subject,
             const SettingsPtr& parent) {
  const JavaCallback callback;
  JNIEnv* env = callback.env();
  if (!env || !parent) return;
  jobjectArray path = getSettingPathAsJArray(env, parent);
  jstring name = path ? jzi::ToJava::javaString(env, subject->getName()) : nullptr;
  if (!name) return;
  const bool gone = number == EventNumber::kRemoved && !target.isInTree();
  deliver(env, target, number, path, name, !subject->isKey(), gone);
}

void onChange(const Target& target, const SettingsPtr& key) {
  if (key.get() != target.address) {
    return onEvent(target, EventNumber::kChanged, key, key->getParent());
  }
  // Java knows path and name of this key.
  const JavaCallback callback;
  if (JNIEnv* env = callback.env()) {
    deliver(env, target, EventNumber::kChanged, nullptr, nullptr, false, false);
  }
}

struct Subscription {
  TargetPtr target;
  ScopedConnection changes, additions, removals;
};

Subscription* subscribe(const SettingsPtr& entry, const TargetPtr& target) {
  return new Subscription{
      target,
      ScopedConnection(entry->addListener<SettingsValueChangeEvent>(
          [target](const SettingsValueChangeEvent& event) { onChange(*target, event.getObj()); })),
      ScopedConnection(
          entry->addListener<SettingsAddNodeEvent>([target](const SettingsAddNodeEvent& event) {
            onEvent(*target, EventNumber::kAdded, event.getObj(), event.getParentObj());
          })),
      ScopedConnection(entry->addListener<SettingsRemoveNodeEvent>(
          [target](const SettingsRemoveNodeEvent& event) {
            onEvent(*target, EventNumber::kRemoved, event.getObj(), event.getParentObj());
          }))};
}

Subscription& subscriptionOf(jlong address) { return *reinterpret_cast<Subscription*>(address); }

// Returns 0 if there is no such entry or it can have no listeners.
jlong listen(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key, jobject listener) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return 0;
  try {
    const SettingsPtr top = getRootFromJava(root);
    SettingsPtr entry = getNodeFromJava(env, root, path, false);
    if (entry && key) entry = entry->getChild(zljGetStdString(env, key));
    if (!entry || !entry->canHaveListeners()) return 0;
    jclass cls = env->GetObjectClass(listener);
    jmethodID deliver = env->GetMethodID(cls, "deliver", kDeliverSignature);
    const auto reference = jzi::detail::makeSharedObject(env, listener, &JNIEnv::NewGlobalRef,
                                                         &JNIEnv::DeleteGlobalRef);
    if (!deliver || !reference) return 0;
    return reinterpret_cast<jlong>(subscribe(
        entry,
        boost::make_shared<Target>(Target{entry, entry.get(), top.get(), reference, deliver})));
  } catch (const std::exception&) {
    return 0;
  }
}

void unlisten(JNIEnv*, jclass, jlong subscription) { delete &subscriptionOf(subscription); }

// Returns true also while the JVM is going down.
jboolean isListening(JNIEnv* env, jclass, jlong subscription) {
  const NativeFrame frame(env);
  return !frame.isOpen() || subscriptionOf(subscription).target->isInTree();
}

}  // namespace

const std::array<JNINativeMethod, 3>& laneListenerMethods() {
  static const std::array<JNINativeMethod, 3> methods = {
      nativeRow("listen",
                "(J[Ljava/lang/String;Ljava/lang/String;"
                "Lcom/velonix/services/settings/SharedListener;)J",
                &listen),
      nativeRow("unlisten", "(J)V", &unlisten),
      nativeRow("isListening", "(J)Z", &isListening),
  };
  return methods;
}

}  // namespace nativesettings
