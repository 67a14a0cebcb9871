#include "nativesettings/changing.h"

#include <stdexcept>

#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/paths.h"
#include "nativesettings/reading.h"
#include "nativesettings/records.h"
#include "nativesettings/transactions.h"
#include "service/identifier.h"
#include "service/settings.h"
#include "service/z_settings.h"
#include "values/class_records.h"
#include "values/java_values.h"

namespace nativesettings {

using zlutil::settings::JValidator;
using zlutil::settings::Settings;
using zlutil::settings::ValidatorChoice;
using zlutil::settings::ZSettings;
using SettingsPtr = boost::shared_ptr<Settings>;

namespace {

// What Java has put into a SettingInfo.
struct GivenValue {
  jobject value;
  jclass cls;
};

// Calls a getter of SettingInfo, looked up on that class itself so that the cached identifier is
// right for every object.
jobject callInfoGetter(JNIEnv* env, jobject settingInfo, std::atomic<jmethodID>& slot,
                       const char* name, const char* signature) {
  jmethodID id =
      jzi::safeGetMethodID(env, globalConsInfos, settingInfoObjCons, slot, name, signature, false);
  return id ? env->CallObjectMethod(settingInfo, id) : nullptr;
}

// Reads a SettingInfo. Nothing when its getValue() threw: the exception is described and cleared,
// and the caller returns as if it had done its work, on purpose.
boost::optional<GivenValue> readInfo(JNIEnv* env, jobject settingInfo) {
  if (!settingInfo) throw std::invalid_argument("null value");
  GivenValue given{};
  given.value =
      callInfoGetter(env, settingInfo, settingInfo_getValueID, "getValue", "()Ljava/lang/Object;");
  if (env->ExceptionCheck()) {
    env->ExceptionDescribe();
    env->ExceptionClear();
    return boost::none;
  }
  given.cls = given.value
                  ? env->GetObjectClass(given.value)
                  : static_cast<jclass>(callInfoGetter(env, settingInfo, settingInfo_getTypeID,
                                                       "getType", "()Ljava/lang/Class;"));
  if (env->ExceptionCheck()) throw std::runtime_error("getType() of the value threw");
  return given;
}

// The handler of set and unset: a pending Java exception is reported by that text alone.
auto attempted(JNIEnv* env, jobjectArray path, jstring key, const char* what) {
  return [=] {
    if (env->ExceptionCheck()) {
      throwJavaExceptionHelper(env, runtimeException, what);
    } else {
      handleException(env, path, key, false);
    }
  };
}

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
      translated(env, path, name, false));
}

}  // namespace

void nativeSet(JNIEnv* env, jclass, jlong context, jlong handle, jobjectArray path, jstring key,
               jobject settingInfo, jstring level) {
  guardedVoid(
      env,
      [&] {
        const SettingsPtr node = getNodeFromJava(env, handle, path, false);
        if (!node) return throwNotFound(env, path, key);
        const boost::optional<GivenValue> given = readInfo(env, settingInfo);
        if (!given) return;
        const std::string keyName = zljGetStdString(env, key);
        const std::string levelName = zljGetStdString(env, level);
        const auto value = getValueFromJava(env, given->value, given->cls);
        if (!value) {
          return throwJavaExceptionHelper(env, settingUnsupportedTypeRuntimeException,
                                          "Unsupported type");
        }
        boost::any any = zlutil::boostany::convertVariantToAny(*value);
        if (context == 0) {
          node->setAny(keyName, any, levelName);
        } else {
          recordChange(*reinterpret_cast<SettingContext*>(context), *node, keyName, std::move(any));
        }
      },
      attempted(env, path, key, "Attempting to set"));
}

void nativeUnset(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key, jstring level) {
  guardedVoid(
      env,
      [&] {
        const SettingsPtr node = getNodeFromJava(env, handle, path, false);
        if (!node) return throwNotFound(env, path, key);
        node->unset(zljGetStdString(env, key), zljGetStdString(env, level));
      },
      attempted(env, path, key, "Attempting to unset"));
}

void nativeAddKey(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                  jobject settingInfo, jstring level, jstring validatorFirst,
                  jstring validatorSecond) {
  if (!addEntry(env, handle, path, name, validatorFirst, validatorSecond, true)) return;
  nativeSet(env, nullptr, 0, handle, path, name, settingInfo, level);
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
      translated(env, path, name, false));
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
      translated(env, firstPath, nullptr, false));
}

jboolean nativeIsKeyNameValid(JNIEnv* env, jclass, jstring name) {
  return zlutil::settings::isIdentifierName(zljGetStdString(env, name).c_str());
}

}  // namespace nativesettings
