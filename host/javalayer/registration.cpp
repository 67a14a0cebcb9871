// Registers natives, and reads the text of a pending exception.
#include <cstdio>

#include "bridge/java_layer.h"
#include "host/javalayer/bridges.h"

namespace jzi {
namespace {

// Calls a String getter of the object. Returns "" if it throws or returns null.
std::string callForText(JNIEnv* env, jobject object, const char* method) {
  jclass cls = env->GetObjectClass(object);
  jmethodID id = env->GetMethodID(cls, method, "()Ljava/lang/String;");
  env->DeleteLocalRef(cls);
  auto text = id ? static_cast<jstring>(env->CallObjectMethod(object, id)) : nullptr;
  if (env->ExceptionCheck()) {
    env->ExceptionClear();
    return "";
  }
  std::string out = zljGetStdString(env, text);
  if (text) env->DeleteLocalRef(text);
  return out;
}

}  // namespace

bool registerNativesImpl(JNIEnv* env, const jziNatives_t& natives) {
  if (!env) return false;
  jclass cls = env->FindClass(natives.className);
  const bool registered =
      cls && env->RegisterNatives(cls, natives.methods, static_cast<jint>(natives.count)) == JNI_OK;
  if (registered) {
    javalayer::bridgeOf(natives.methods).adopt(env, cls);
  } else {
    const std::string reason = extractExceptionMessage(env);
    env->ExceptionClear();
    std::fprintf(stderr, "nativesettings: cannot register the natives of %s: %s\n",
                 natives.className, base::displayFromNarrow(reason).c_str());
  }
  if (cls) env->DeleteLocalRef(cls);
  return registered;
}

std::string extractExceptionMessage(JNIEnv* env) {
  jthrowable pending = env->ExceptionOccurred();
  if (!pending) return "";
  env->ExceptionClear();
  std::string message = callForText(env, pending, "getMessage");
  if (message.empty()) message = callForText(env, pending, "toString");
  env->Throw(pending);
  env->DeleteLocalRef(pending);
  return message;
}

}  // namespace jzi
