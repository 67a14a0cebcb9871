// The cache of one Java class for one bridge: the class, and the methods that were resolved on it.
// Records and their copies borrow from it, so a lookup on a copy costs a load.
//
// The class is held by a weak global reference: a strong one would keep the class's loader, and
// with it the library, in memory for ever. The reference stays valid while any code of the bridge
// can run, because that code is called through classes of the same loader.
#pragma once

#include <jni.h>

#include <atomic>
#include <string>

namespace javalayer {
class Bridge;
}

namespace jzi {
namespace detail {

// A resolved method, in a list that only grows until release().
struct CachedMethod {
  std::string name;
  std::string signature;
  bool isStatic;
  jmethodID id;
  CachedMethod* next;
};

struct ClassCache {
  ClassCache(javalayer::Bridge& owner, const char* className) : bridge(owner), name(className) {}

  // Returns the class, resolved at first use. Throws as java_layer.h says.
  jclass find(JNIEnv* env);

  // Returns the method, resolved at first use, or null with the JVM's exception pending if there is
  // none.
  jmethodID findMethod(JNIEnv* env, const char* methodName, const char* signature, bool isStatic);

  // Drops everything resolved. No other thread may use the cache.
  void release(JNIEnv* env);

  javalayer::Bridge& bridge;
  const std::string name;
  std::atomic<jclass> cls{nullptr};
  std::atomic<CachedMethod*> methods{nullptr};
};

}  // namespace detail
}  // namespace jzi
