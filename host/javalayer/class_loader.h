// The class loader of one bridge, which finds all its Java classes. FindClass would not: on a
// native thread it asks the system loader, which may not know them or may know other classes of the
// same names; on a thread that Java has called it asks the caller's loader, which may be another
// bridge's.
#pragma once

#include <jni.h>

#include <atomic>
#include <string>

namespace javalayer {

// Any thread.
class ClassLoader {
 public:
  // Remembers the loader of `cls` by a weak reference. Returns false if it was another one before;
  // no other thread may use it then.
  bool remember(JNIEnv* env, jclass cls);

  void forget(JNIEnv* env);

  // Returns a new local reference to the class of that JNI name ("java/lang/String",
  // "[Ljava/lang/String;"). Asks the system loader if no loader is remembered. Leaves the JVM's
  // exception pending and throws std::runtime_error if there is no such class, or if the loader has
  // been collected.
  jclass findClass(JNIEnv* env, const std::string& className) const;

  // Returns the class of the slot, and fills an empty slot by findClass(). The slot owns a weak
  // reference; the result is borrowed from it.
  jclass resolve(JNIEnv* env, std::atomic<jclass>& slot, const char* className) const;

 private:
  // A weak global reference; null if no class has been registered, or for the bootstrap loader.
  std::atomic<jobject> loader_{nullptr};
};

}  // namespace javalayer
