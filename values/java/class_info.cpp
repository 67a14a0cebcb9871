#include "values/java/class_info.h"

#include <string>

#include "bridge/class_slot.h"
#include "bridge/java_layer.h"

namespace nativesettings {

ClassInfo::~ClassInfo() { ClassInfo::reset(); }

void ClassInfo::reset() {
  ConsInfo::reset();
  arrayClass_.store(nullptr, std::memory_order_release);
  getter_.store(nullptr, std::memory_order_release);
}

jclass ClassInfo::getArrayClass(JNIEnv* env) {
  if (!arrayClassResolved_.load(std::memory_order_acquire)) {
    const std::string name = std::string("[L") + className() + ";";
    jclass found = jzi::safeFindClass(env, arrayClass_, name.c_str());
    arrayClassResolved_.store(true, std::memory_order_release);
    return found;
  }
  jclass cached = arrayClass_.load(std::memory_order_acquire);
  return cached ? static_cast<jclass>(env->NewLocalRef(cached)) : nullptr;
}

void ClassInfo::releaseArrayClass(JNIEnv* env) { jzi::releaseClass(env, arrayClass_); }

void ClassInfo::rearm(JNIEnv* env) {
  releaseArrayClass(env);
  arrayClassResolved_.store(false, std::memory_order_release);
}

}  // namespace nativesettings
