#include "nativesettings/changing.h"

#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/paths.h"
#include "nativesettings/reading.h"
#include "nativesettings/records.h"
#include "nativesettings/transactions.h"
#include "service/identifier.h"
#include "service/settings.h"
#include "service/z_settings.h"
#include "values/exchange.h"
#include "values/java_values.h"

namespace nativesettings {

using zlutil::boostany::SettingValueVariant;
using zlutil::settings::JValidator;
using zlutil::settings::Settings;
using zlutil::settings::ValidatorChoice;
using zlutil::settings::ZSettings;
using SettingsPtr = boost::shared_ptr<Settings>;

namespace {

constexpr const char* kAttemptingToSet = "Attempting to set";

void recordChange(SettingContext& context, const Settings& node, const std::string& key,
                  boost::any value) {
  const SettingsPtr child = node.getChild(key);
  if (child) context.record(child->getPath(), std::move(value));
}

// Inserts a new entry under the place that handle and path name; false, with an exception pending,
// when that fails.
bool addEntry(JNIEnv* env, jlong handle, jobjectArray path, jstring name, jstring validatorFirst,
              jstring validatorSecond, bool isKey) {
  return guarded(
      env, false,
      [&] {
        const SettingsPtr parent = getNodeFromJava(env, handle, path, false);
        if (!parent) {
          throwNotFound(env, path, nullptr);
          return false;
        }
        ValidatorChoice validator;
        if (validatorFirst && validatorSecond) {
          validator = JValidator(zljGetStdString(env, validatorFirst),
                                 zljGetStdString(env, validatorSecond));
        }
        ZSettings::createSettingsNode(zljGetStdString(env, name), isKey, true, validator)
            ->attachTo(parent);
        return true;
      },
      Failed(env, path, name, false));
}

// Sets or, with a context, records the value, within somebody's guard.
void setValue(JNIEnv* env, jlong context, jlong handle, jobjectArray path, jstring key,
              jobject settingInfo, jstring level) {
  translating(Failed(env, path, key, false, kAttemptingToSet), [&] {
    const GivenArguments given(env, path, key, level, settingInfo);
    const SettingsPtr node = getEntry(handle, given.path, false);
    if (!node) return throwNotFound(env, path, key);
    boost::optional<SettingValueVariant> value;
    switch (getValueFromInfo(env, settingInfo, given.rest, value)) {
      case InfoOutcome::kGetValueThrew:
        // Described, cleared, and as good as done: deliberate.
        env->ExceptionDescribe();
        return env->ExceptionClear();
      case InfoOutcome::kFailed:
        return throwJavaExceptionHelper(env, runtimeException, kAttemptingToSet);
      case InfoOutcome::kRead:
        break;
    }
    if (!value) {
      return throwJavaExceptionHelper(env, settingUnsupportedTypeRuntimeException,
                                      "Unsupported type");
    }
    boost::any any = zlutil::boostany::convertVariantToAny(std::move(*value));
    if (context == 0) {
      node->setAny(given.key, any, given.level);
    } else {
      recordChange(*reinterpret_cast<SettingContext*>(context), *node, given.key, std::move(any));
    }
  });
}

}  // namespace

void nativeSet(JNIEnv* env, jclass, jlong context, jlong handle, jobjectArray path, jstring key,
               jobject settingInfo, jstring level) {
  const jzi::NativeShutdownGuard guard(env);
  if (guard.JVMRunning()) setValue(env, context, handle, path, key, settingInfo, level);
}

void nativeUnset(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key, jstring level) {
  guardedVoid(
      env,
      [&] {
        const GivenArguments given(env, path, key, level);
        const SettingsPtr node = getEntry(handle, given.path, false);
        if (!node) return throwNotFound(env, path, key);
        node->unset(given.key, given.level);
      },
      Failed(env, path, key, false, "Attempting to unset"));
}

void nativeAddKey(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                  jobject settingInfo, jstring level, jstring validatorFirst,
                  jstring validatorSecond) {
  // Open to the end; but it is the guard within the first half that decides, and for both halves: a
  // key must not come without its value because the JVM goes down between them.
  const jzi::NativeShutdownGuard guard(env);
  if (!addEntry(env, handle, path, name, validatorFirst, validatorSecond, true)) return;
  setValue(env, 0, handle, path, name, settingInfo, level);
}

void nativeAddNode(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                   jstring validatorFirst, jstring validatorSecond) {
  addEntry(env, handle, path, name, validatorFirst, validatorSecond, false);
}

void nativeDelete(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name) {
  guardedVoid(
      env,
      [&] {
        const SettingsPtr parent = getNodeFromJava(env, handle, path, false);
        if (!parent) return throwNotFound(env, path, nullptr);
        const SettingsPtr child = getChildFromJava(env, parent, name, false);
        if (child->isKey()) {
          parent->removeKey(child->getName());
        } else {
          parent->removeNode(child->getName());
        }
      },
      Failed(env, path, name, false));
}

void nativeCopySubtree(JNIEnv* env, jclass, jlong firstHandle, jobjectArray firstPath,
                       jlong secondHandle, jobjectArray secondPath, jstring name) {
  guardedVoid(
      env,
      [&] {
        const SettingsPtr first = getNodeFromJava(env, firstHandle, firstPath, false);
        const SettingsPtr second = getNodeFromJava(env, secondHandle, secondPath, false);
        if (!first) return throwNotFound(env, firstPath, nullptr);
        first->copySubtree(second, zljGetStdString(env, name));
      },
      Failed(env, firstPath, nullptr, false));
}

jboolean nativeIsKeyNameValid(JNIEnv* env, jclass, jstring name) {
  return zlutil::settings::isIdentifierName(zljGetStdString(env, name).c_str());
}

}  // namespace nativesettings
