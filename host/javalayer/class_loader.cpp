#include "host/javalayer/class_loader.h"

#include <algorithm>
#include <stdexcept>

namespace javalayer {
namespace {

// Calls Class.forName(name, false, loader). Returns null, with the JVM's exception pending, if
// there is no such class.
jclass forName(JNIEnv* env, const std::string& className, jobject loader) {
  std::string dotted = className;
  std::replace(dotted.begin(), dotted.end(), '/', '.');
  jclass classClass = env->FindClass("java/lang/Class");
  if (!classClass) return nullptr;
  jmethodID find = env->GetStaticMethodID(
      classClass, "forName", "(Ljava/lang/String;ZLjava/lang/ClassLoader;)Ljava/lang/Class;");
  jstring name = find ? env->NewStringUTF(dotted.c_str()) : nullptr;
  jobject found = nullptr;
  if (name) {
    found = env->CallStaticObjectMethod(classClass, find, name, JNI_FALSE, loader);
    if (env->ExceptionCheck()) found = nullptr;
    env->DeleteLocalRef(name);
  }
  env->DeleteLocalRef(classClass);
  return static_cast<jclass>(found);
}

// Returns the loader of the class as a local reference, or null for the bootstrap loader.
jobject loaderOf(JNIEnv* env, jclass cls) {
  jclass classClass = env->GetObjectClass(cls);
  jmethodID getLoader = env->GetMethodID(classClass, "getClassLoader", "()Ljava/lang/ClassLoader;");
  jobject found = getLoader ? env->CallObjectMethod(cls, getLoader) : nullptr;
  if (env->ExceptionCheck()) env->ExceptionClear();
  env->DeleteLocalRef(classClass);
  return found;
}

void failAsCollected(JNIEnv* env, const std::string& className) {
  jclass error = env->FindClass("java/lang/IllegalStateException");
  if (!error) return;
  env->ThrowNew(error, ("the class loader of " + className + " has been collected").c_str());
  env->DeleteLocalRef(error);
}

}  // namespace

bool ClassLoader::remember(JNIEnv* env, jclass cls) {
  jobject found = loaderOf(env, cls);
  if (!found) return true;
  const jobject before = loader_.load(std::memory_order_acquire);
  const bool isSame = before && env->IsSameObject(before, found);
  if (!isSame) {
    forget(env);
    loader_.store(env->NewWeakGlobalRef(found), std::memory_order_release);
  }
  env->DeleteLocalRef(found);
  return isSame || !before;
}

void ClassLoader::forget(JNIEnv* env) {
  jobject held = loader_.exchange(nullptr);
  if (held && env) env->DeleteWeakGlobalRef(static_cast<jweak>(held));
}

jclass ClassLoader::findClass(JNIEnv* env, const std::string& className) const {
  jclass found = nullptr;
  if (jobject weak = loader_.load(std::memory_order_acquire)) {
    // The local reference keeps the loader alive during the call.
    if (jobject held = env->NewLocalRef(weak)) {
      found = forName(env, className, held);
      env->DeleteLocalRef(held);
    } else {
      failAsCollected(env, className);
    }
  } else {
    found = env->FindClass(className.c_str());
  }
  if (!found) throw std::runtime_error("java class not found: " + className);
  return found;
}

jclass ClassLoader::resolve(JNIEnv* env, std::atomic<jclass>& slot, const char* className) const {
  if (jclass known = slot.load(std::memory_order_acquire)) return known;
  jclass local = findClass(env, className);
  auto weak = static_cast<jclass>(env->NewWeakGlobalRef(local));
  env->DeleteLocalRef(local);
  // There was no memory for the reference.
  if (!weak) throw std::runtime_error(std::string("java class not found: ") + className);
  jclass expected = nullptr;
  // Of two threads that resolve the class at once, the first wins; the other releases its
  // reference.
  if (slot.compare_exchange_strong(expected, weak, std::memory_order_acq_rel)) return weak;
  env->DeleteWeakGlobalRef(weak);
  return expected;
}

}  // namespace javalayer
