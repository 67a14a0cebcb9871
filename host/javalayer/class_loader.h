// The class loader of one bridge, by which all its Java classes are looked up: FindClass on a
// native thread sees the system loader only, which may not know them, or may know other classes of
// the same name, and on a thread that Java has called it sees the caller's, which may be another
// bridge's.
#pragma once

#include <jni.h>

#include <atomic>
#include <string>

namespace javalayer {

// Any thread.
class ClassLoader {
 public:
  // Remembers the loader of `cls`, by a weak reference. False when it was another one before; only
  // while no other thread uses it.
  bool remember(JNIEnv* env, jclass cls);

  // Forgets the loader.
  void forget(JNIEnv* env);

  // A new local reference to the class of that JNI name ("java/lang/String",
  // "[Ljava/lang/String;"), as the loader knows it; as the system loader does when none has been
  // remembered. When there is no such class, or the loader has been collected, leaves the JVM's
  // exception pending and throws std::runtime_error.
  jclass findClass(JNIEnv* env, const std::string& className) const;

  // The same into a slot that is filled once: from then on gives what is there. The slot owns a
  // weak reference, and the result is borrowed from it.
  jclass resolve(JNIEnv* env, std::atomic<jclass>& slot, const char* className) const;

 private:
  // A weak global reference; null while no class has been registered, or when the loader is the
  // bootstrap loader.
  std::atomic<jobject> loader_{nullptr};
};

}  // namespace javalayer
