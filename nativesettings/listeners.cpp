#include "nativesettings/listeners.h"

#include <boost/bind/bind.hpp>

#include "bridge/java_layer.h"
#include "bridge/shared_object.h"
#include "nativesettings/frame.h"
#include "nativesettings/listener_delivery.h"
#include "nativesettings/listener_registry.h"
#include "nativesettings/paths.h"
#include "nativesettings/reading.h"
#include "service/events.h"

namespace nativesettings {

using jzi::detail::makeSharedObject;
using zlutil::settings::Settings;
using JavaReference = boost::shared_ptr<jobject>;
using SettingsPtr = boost::shared_ptr<Settings>;

namespace {

// Subscribes to one kind of event and enters the subscription into the registry. If an equal key is
// there already, the new subscription ends when this returns.
template <class Event>
void subscribe(ListenerRegistry& registry, const ListenerKey& key, const SettingsPtr& node,
               const JavaReference& source,
               void (*deliver)(const JavaReference&, const Event&, const JavaReference&)) {
  using boost::placeholders::_1;
  const boost::function1<void, const Event&> callback = boost::bind(deliver, key.first, _1, source);
  const ListenerSubscription subscription(
      new zlutil::eventmgr::ScopedConnection(node->addListener<Event>(callback)));
  if (!subscription->isEmpty()) registry.insert({key, subscription});
}

}  // namespace

void addListener(JNIEnv* env, jobject listener, jobject source, const SettingsPtr& node) {
  const JavaReference listenerRef =
      makeSharedObject(env, listener, &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef);
  if (!listenerRef) return;
  const JavaReference sourceRef =
      makeSharedObject(env, source, &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef);
  const ListenerKey key(listenerRef, node);
  subscribe(valueChangeListeners, key, node, sourceRef, &onSettingChanged);
  subscribe(addNodeListeners, key, node, sourceRef, &onSettingAdded);
  subscribe(removeNodeListeners, key, node, sourceRef, &onSettingRemoved);
}

void removeListener(JNIEnv* env, jobject listener, const SettingsPtr& node) {
  const JavaReference listenerRef =
      makeSharedObject(env, listener, &JNIEnv::NewLocalRef, &JNIEnv::DeleteLocalRef);
  if (!listenerRef) return;
  const ListenerKey key(listenerRef, node);
  valueChangeListeners.erase(key);
  addNodeListeners.erase(key);
  removeNodeListeners.erase(key);
}

void nativeAddRemoveListener(JNIEnv* env, jclass, jobject source, jlong handle, jobjectArray path,
                             jstring keyName, jobject listener) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return;
  translating(FailureTranslator(env, path, keyName, false), [&] {
    const SettingsPtr node = getNodeFromJava(env, handle, path, false);
    if (!node) return throwNotFound(env, path, nullptr);
    const SettingsPtr target = keyName ? getChildFromJava(env, node, keyName, false) : node;
    if (source) {
      addListener(env, listener, source, target);
    } else {
      removeListener(env, listener, target);
    }
  });
}

}  // namespace nativesettings
