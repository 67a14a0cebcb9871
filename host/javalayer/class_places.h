// One place per bridge and Java class that was ever looked up through a record: the class, and the
// methods that were resolved on it. Records and their copies borrow from it, so a lookup on a copy
// costs a load.
//
// The class is held by a weak global reference: what is cached must not keep the class's loader,
// and with it the library, in memory for ever. It stays valid while any code of the bridge can run,
// because that code is called through classes of the same loader.
#pragma once

#include <jni.h>

#include <atomic>
#include <string>

namespace javalayer {
class Bridge;
}

namespace jzi {
namespace detail {

// One resolved method, in a list that only grows until release().
struct MethodPlace {
  std::string name;
  std::string signature;
  bool isStatic;
  jmethodID id;
  MethodPlace* next;
};

struct ClassPlace {
  ClassPlace(javalayer::Bridge& owner, const char* className) : bridge(owner), name(className) {}

  // The class, resolved at first use. Throws as java_layer.h says.
  jclass find(JNIEnv* env);

  // The method, resolved at first use; null with the JVM's exception pending when there is none.
  jmethodID findMethod(JNIEnv* env, const char* methodName, const char* signature, bool isStatic);

  // Drops everything resolved. Only while no other thread uses the place.
  void release(JNIEnv* env);

  javalayer::Bridge& bridge;
  const std::string name;
  std::atomic<jclass> cls{nullptr};
  std::atomic<MethodPlace*> methods{nullptr};
};

}  // namespace detail
}  // namespace jzi
