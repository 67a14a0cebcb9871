#include "host/javalayer/class_loader.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>

namespace javalayer {
namespace {

// A weak global reference; null while no class has been registered, or when the loader is the
// bootstrap loader.
std::atomic<jobject> loader{nullptr};

// Class.forName(name, false, loader); null with the JVM's exception pending when there is none.
jclass forName(JNIEnv* env, const std::string& className, jobject from) {
  std::string dotted = className;
  std::replace(dotted.begin(), dotted.end(), '/', '.');
  jclass classClass = env->FindClass("java/lang/Class");
  if (!classClass) return nullptr;
  jmethodID find = env->GetStaticMethodID(
      classClass, "forName", "(Ljava/lang/String;ZLjava/lang/ClassLoader;)Ljava/lang/Class;");
  jstring name = find ? env->NewStringUTF(dotted.c_str()) : nullptr;
  jobject found = nullptr;
  if (name) {
    found = env->CallStaticObjectMethod(classClass, find, name, JNI_FALSE, from);
    if (env->ExceptionCheck()) found = nullptr;
    env->DeleteLocalRef(name);
  }
  env->DeleteLocalRef(classClass);
  return static_cast<jclass>(found);
}

}  // namespace

void rememberLoader(JNIEnv* env, jclass cls) {
  if (loader.load(std::memory_order_acquire)) return;
  jclass classClass = env->GetObjectClass(cls);
  jmethodID getLoader = env->GetMethodID(classClass, "getClassLoader", "()Ljava/lang/ClassLoader;");
  jobject found = getLoader ? env->CallObjectMethod(cls, getLoader) : nullptr;
  if (env->ExceptionCheck()) env->ExceptionClear();
  if (found) {
    jobject weak = env->NewWeakGlobalRef(found);
    jobject expected = nullptr;
    if (!loader.compare_exchange_strong(expected, weak)) env->DeleteWeakGlobalRef(weak);
    env->DeleteLocalRef(found);
  }
  env->DeleteLocalRef(classClass);
}

void forgetLoader(JNIEnv* env) {
  jobject held = loader.exchange(nullptr);
  if (held && env) env->DeleteWeakGlobalRef(static_cast<jweak>(held));
}

jclass findClass(JNIEnv* env, const std::string& className) {
  jobject from = loader.load(std::memory_order_acquire);
  // A local reference keeps the loader while it is asked; null when it is gone.
  jobject held = from ? env->NewLocalRef(from) : nullptr;
  jclass found = held ? forName(env, className, held) : env->FindClass(className.c_str());
  if (held) env->DeleteLocalRef(held);
  if (!found) throw std::runtime_error("java class not found: " + className);
  return found;
}

}  // namespace javalayer
