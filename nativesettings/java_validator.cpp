#include "nativesettings/java_validator.h"

#include <stdexcept>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/paths.h"
#include "service/failures.h"
#include "service/settings.h"
#include "values/class_records.h"
#include "values/java_values.h"

namespace nativesettings {

using namespace KORVEN::settings::core;
using jzi::ToJava::javaString;
using zlutil::settings::Failure;
using zlutil::settings::Settings;

namespace {

constexpr const char* kValidateSignature =
    "(Ljava/lang/String;Ljava/lang/String;J[Ljava/lang/String;Ljava/lang/String;Ljava/lang/Object;)"
    "Ljava/lang/String;";

// The Java method that runs validators; null when its class does not have it. A class that is
// missing altogether means that this validator cannot be run.
jmethodID findValidate(JNIEnv* env, const std::string& first, const std::string& second) {
  try {
    return jzi::safeGetMethodID(env, globalConsInfos, settingValidatorCons,
                                settingValidator_validateID, "validate", kValidateSignature, true);
  } catch (const std::runtime_error& e) {
    env->ExceptionClear();
    throw Failure<FailedToRunJavaValidator>(first, second, std::string(e.what()));
  }
}

}  // namespace

void javaValidator(const std::string& first, const std::string& second,
                   const boost::shared_ptr<const Settings>& node, const std::string& keyName,
                   const boost::any& value) {
  const jzi::JavaGuard guard;
  JNIEnv* env = guard.env();
  if (!env) throw Failure<JVMNotReadyForProcessingJavaFunction>();
  // What an earlier call left pending is not the validator's failure.
  env->ExceptionClear();
  jstring key = javaString(env, keyName);
  jobject object = getJavaValueFromKey(env, value);
  jmethodID validate = findValidate(env, first, second);
  jobjectArray path = validate ? getSettingPathAsJArray(env, node) : nullptr;
  env->ExceptionClear();
  // Deliberate: where Java has nobody to ask, the value counts as valid.
  if (!validate || !path) return;
  const auto context = static_cast<jlong>(node->getZcrID().value());
  jclass cls = jzi::safeFindClass(env, globalConsInfos, settingValidatorCons);
  jstring secondText = javaString(env, second);
  jstring firstText = javaString(env, first);
  auto reason = static_cast<jstring>(env->CallStaticObjectMethod(
      cls, validate, firstText, secondText, context, path, key, object));
  if (env->ExceptionCheck()) {
    const std::string message = jzi::extractExceptionMessage(env);
    env->ExceptionClear();
    throw Failure<FailedToRunJavaValidator>(first, second, message);
  }
  if (reason) throw Failure<ValidationFailure>(zljGetStdString(env, reason));
}

}  // namespace nativesettings
