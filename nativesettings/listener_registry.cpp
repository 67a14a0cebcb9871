#include "nativesettings/listener_registry.h"

#include "base/never_destroyed.h"
#include "bridge/java_layer.h"
#include "values/java/class_records.h"

namespace nativesettings {
namespace {

jzi::ConsInfo systemCons("java/lang/System", nullptr);
std::atomic<jmethodID> identityHashCodeID{nullptr};

base::NeverDestroyed<ListenerRegistry> valueChange;
base::NeverDestroyed<ListenerRegistry> addNode;
base::NeverDestroyed<ListenerRegistry> removeNode;

// When the library is unloaded from a JVM that goes on, the subscriptions must end before the code
// of their callbacks goes. While the process exits they stay: other threads may still be
// publishing.
struct EndSubscriptionsAtUnload {
  ~EndSubscriptionsAtUnload() {
    if (!jzi::JVMShutdownGuard().JVMRunning()) return;
    valueChangeListeners.clear();
    addNodeListeners.clear();
    removeNodeListeners.clear();
  }
} endSubscriptionsAtUnload;

}  // namespace

ListenerRegistry& valueChangeListeners = valueChange.get();
ListenerRegistry& addNodeListeners = addNode.get();
ListenerRegistry& removeNodeListeners = removeNode.get();

void forgetIdentityHash() { identityHashCodeID = nullptr; }

}  // namespace nativesettings

namespace zlutil {
namespace threadutil {

using nativesettings::ListenerKey;

std::size_t Hash<boost::shared_ptr<jobject>>::hash(const boost::shared_ptr<jobject>& reference) {
  JNIEnv* env = GetJNIEnvR();
  if (!reference || !env) return 0;
  using nativesettings::globalConsInfos;
  using nativesettings::systemCons;
  jmethodID id =
      jzi::safeGetMethodID(env, globalConsInfos, systemCons, nativesettings::identityHashCodeID,
                           "identityHashCode", "(Ljava/lang/Object;)I", true);
  jclass system = jzi::safeFindClass(env, globalConsInfos, systemCons);
  const jint hash = env->CallStaticIntMethod(system, id, *reference);
  if (env->ExceptionCheck()) env->ExceptionClear();
  // Spread over all bits: TBB uses the low ones.
  return static_cast<std::size_t>(static_cast<unsigned>(hash)) * 0x9E3779B97F4A7C15u >> 16;
}

bool Hash<boost::shared_ptr<jobject>>::equal(const boost::shared_ptr<jobject>& a,
                                             const boost::shared_ptr<jobject>& b) {
  if (a == b) return true;
  JNIEnv* env = GetJNIEnvR();
  return a && b && env && env->IsSameObject(*a, *b);
}

std::size_t Hash<ListenerKey>::hash(const ListenerKey& key) {
  return Hash<boost::shared_ptr<jobject>>::hash(key.first);
}

bool Hash<ListenerKey>::equal(const ListenerKey& a, const ListenerKey& b) {
  if (!Hash<boost::shared_ptr<jobject>>::equal(a.first, b.first)) return false;
  // Throws boost::bad_weak_ptr for a dead node, on purpose; lock() would not.
  using Node = boost::shared_ptr<zlutil::settings::Settings>;
  return Node(a.second) == Node(b.second);
}

}  // namespace threadutil
}  // namespace zlutil
