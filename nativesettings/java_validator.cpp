#include "nativesettings/java_validator.h"

#include <stdexcept>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/java_callback.h"
#include "nativesettings/paths.h"
#include "service/failures.h"
#include "service/settings.h"
#include "service/validators.h"
#include "values/java/class_records.h"
#include "values/java/java_values.h"

namespace nativesettings {

using namespace KORVEN::settings::core;
using jzi::ToJava::javaString;
using zlutil::settings::Failure;
using zlutil::settings::Settings;
using zlutil::settings::UnknownJavaValidator;

namespace {

constexpr const char* kValidateSignature =
    "(Ljava/lang/String;Ljava/lang/String;J[Ljava/lang/String;Ljava/lang/String;Ljava/lang/Object;)"
    "Ljava/lang/String;";

// Returns whether the Java object is an instance of that class of the JDK.
bool isA(JNIEnv* env, jobject object, const char* className) {
  jclass cls = env->FindClass(className);
  env->ExceptionClear();
  return cls && env->IsInstanceOf(object, cls);
}

// Returns a reference to the class that runs validators. It keeps that class, all others of its
// class loader, and the classes and methods resolved on them, until the call is over. Null if Java
// has no such class. If the loader itself has been collected, no validator is known any more.
jobject keepClasses(JNIEnv* env, const std::string& first, const std::string& second) {
  const std::string gone = "its class loader has gone";
  try {
    if (jobject kept =
            env->NewLocalRef(jzi::safeFindClass(env, globalConsInfos, settingValidatorCons))) {
      return kept;
    }
  } catch (const std::runtime_error&) {
    jthrowable thrown = env->ExceptionOccurred();
    env->ExceptionClear();
    if (!thrown || !isA(env, thrown, "java/lang/IllegalStateException")) return nullptr;
  }
  throw UnknownJavaValidator(first, second, gone);
}

// Returns the method that runs validators; null if Java has no such class or method.
jmethodID findValidate(JNIEnv* env) {
  try {
    return jzi::safeGetMethodID(env, globalConsInfos, settingValidatorCons,
                                settingValidator_validateID, "validate", kValidateSignature, true);
  } catch (const std::runtime_error&) {
    return nullptr;
  }
}

// Throws the pending Java exception, if there is one, as the reason why the validator has failed. A
// ClassNotFoundException means that Java does not know the validator.
void refuseWhenPending(JNIEnv* env, const std::string& first, const std::string& second) {
  jthrowable thrown = env->ExceptionOccurred();
  if (!thrown) return;
  const std::string message = jzi::extractExceptionMessage(env);
  env->ExceptionClear();
  if (isA(env, thrown, "java/lang/ClassNotFoundException")) {
    throw UnknownJavaValidator(first, second, message);
  }
  throw Failure<FailedToRunJavaValidator>(first, second, message);
}

}  // namespace

void javaValidator(const std::string& first, const std::string& second,
                   const boost::shared_ptr<const Settings>& node, const std::string& keyName,
                   const boost::any& value) {
  const JavaCallback callback;
  JNIEnv* env = callback.env();
  if (!env) throw Failure<JVMNotReadyForProcessingJavaFunction>();
  // A Java exception that an earlier call left pending is not the failure of the validator.
  env->ExceptionClear();
  jobject cls = keepClasses(env, first, second);
  jstring key = javaString(env, keyName);
  jobject object = key ? getJavaValueFromKey(env, value) : nullptr;
  env->ExceptionClear();
  jmethodID validate = cls ? findValidate(env) : nullptr;
  jobjectArray path = validate ? getSettingPathAsJArray(env, node) : nullptr;
  // A value or key that Java has no memory for reaches the validator as null, which it refuses.
  env->ExceptionClear();
  // Deliberate: if Java has no method that runs validators, the value counts as valid.
  if (!validate || !path) return;
  const auto context = static_cast<jlong>(node->getZcrID().value());
  jstring secondText = javaString(env, second);
  jstring firstText = secondText ? javaString(env, first) : nullptr;
  refuseWhenPending(env, first, second);
  auto reason = static_cast<jstring>(env->CallStaticObjectMethod(
      static_cast<jclass>(cls), validate, firstText, secondText, context, path, key, object));
  refuseWhenPending(env, first, second);
  if (reason) throw Failure<ValidationFailure>(zljGetStdString(env, reason));
}

}  // namespace nativesettings
