// The functions that the JVM calls when it loads and unloads the library.
#include <jni.h>

#include "base/export.h"
#include "bridge/java_layer.h"
#include "nativesettings/java_validator.h"
#include "nativesettings/lane.h"
#include "nativesettings/lane_problems.h"
#include "nativesettings/listener_delivery.h"
#include "nativesettings/listener_registry.h"
#include "nativesettings/registration.h"
#include "service/validators.h"
#include "values/java/class_records.h"

using zlutil::settings::JValidator;

extern "C" NATIVESETTINGS_API jint JNICALL JNI_OnLoad(JavaVM* vm, void*) {
  if (!GetJNIEnvR()) jzi::junit::initJUnitVM(vm);
  void* env = nullptr;
  if (vm->GetEnv(&env, JNI_VERSION_1_4) != JNI_EVERSION) {
    auto* jni = static_cast<JNIEnv*>(env);
    nativesettings::rearmClassRecords(jni);
    for (const jzi::jziNatives_t& natives : nativesettings::registeredClasses()) {
      // A class that cannot be registered does not stop the others: Java reports its methods as
      // unlinked when they are called.
      static_cast<void>(jzi::registerNativesImpl(jni, natives));
    }
    nativesettings::registerLane(jni);
  }
  JValidator::setJValProxy(&nativesettings::javaValidator);
  return JNI_VERSION_1_4;
}

extern "C" NATIVESETTINGS_API void JNICALL JNI_OnUnload(JavaVM*, void*) {
  JValidator::clearFunctions();
  nativesettings::giveBackProblemsOfJava();
  nativesettings::forgetIdentityHash();
  nativesettings::forgetDeliveryIdentifiers();
  nativesettings::nativesettings_utilsUnload();
}
