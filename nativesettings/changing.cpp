#include "nativesettings/changing.h"

#include <stdexcept>

#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/paths.h"
#include "nativesettings/reading.h"
#include "nativesettings/records.h"
#include "nativesettings/transactions.h"
#include "service/identifier.h"
#include "service/new_key.h"
#include "service/settings.h"
#include "service/z_settings.h"
#include "values/java/class_records.h"
#include "values/java/java_values.h"

namespace nativesettings {

using zlutil::settings::JValidator;
using zlutil::settings::NewKey;
using zlutil::settings::Settings;
using zlutil::settings::ValidatorChoice;
using zlutil::settings::ZSettings;
using SettingsPtr = boost::shared_ptr<Settings>;

namespace {

// The content of a SettingInfo: the value, and its class or else the type that it carries.
struct InfoContent {
  jobject value;
  jclass cls;
};

// Calls a getter of SettingInfo. Its identifier is looked up on that class itself, so that the
// cached one is right for objects of every subclass.
jobject callInfoGetter(JNIEnv* env, jobject settingInfo, std::atomic<jmethodID>& slot,
                       const char* name, const char* signature) {
  jmethodID id =
      jzi::safeGetMethodID(env, globalConsInfos, settingInfoObjCons, slot, name, signature, false);
  if (!id) throw std::runtime_error(std::string("java method not found: ") + name);
  return env->CallObjectMethod(settingInfo, id);
}

// Reads a SettingInfo. Returns nothing if its getValue() threw: the exception is described and
// cleared, and the native returns as if it had done its work. This is deliberate.
boost::optional<InfoContent> readInfo(JNIEnv* env, jobject settingInfo) {
  if (!settingInfo) throw std::invalid_argument("null value");
  InfoContent content{};
  content.value =
      callInfoGetter(env, settingInfo, settingInfo_getValueID, "getValue", "()Ljava/lang/Object;");
  if (env->ExceptionCheck()) {
    env->ExceptionDescribe();
    env->ExceptionClear();
    return boost::none;
  }
  content.cls = content.value
                    ? env->GetObjectClass(content.value)
                    : static_cast<jclass>(callInfoGetter(env, settingInfo, settingInfo_getTypeID,
                                                         "getType", "()Ljava/lang/Class;"));
  if (env->ExceptionCheck()) throw std::runtime_error("getType() of the value threw");
  return content;
}

void recordChange(SettingContext& context, const Settings& node, const std::string& key,
                  boost::any value) {
  const SettingsPtr child = node.getChild(key);
  if (child) context.record(child->getPath(), std::move(value));
}

// Sets or, with a context, records the value. The caller has opened the guard.
void setValue(JNIEnv* env, jlong context, jlong handle, jobjectArray path, jstring key,
              jobject settingInfo, jstring level) {
  const FailureTranslator translator =
      FailureTranslator(env, path, key, false, "Attempting to set").afterFindingTheNode();
  translating(translator, [&] {
    const SettingsPtr node = getNodeFromJava(env, handle, path, false);
    if (!node) return throwNotFound(env, path, key);
    const boost::optional<InfoContent> content = readInfo(env, settingInfo);
    if (!content) return;
    const std::string keyName = zljGetStdString(env, key);
    const std::string levelName = zljGetStdString(env, level);
    const auto value = getValueFromJava(env, content->value, content->cls);
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
  });
}

// Adds the key without its value if it still waits for it. Listeners are called then, so a pending
// exception is put aside meanwhile.
void settle(JNIEnv* env, const FailureTranslator& translator) {
  jthrowable pending = env->ExceptionOccurred();
  env->ExceptionClear();
  translating(translator, [] { NewKey::settle(); });
  if (pending && !env->ExceptionCheck()) env->Throw(pending);
}

}  // namespace

void addNodeHelper(JNIEnv* env, jlong handle, jobjectArray path, jstring name, jobject settingInfo,
                   jstring level, jstring validatorFirst, jstring validatorSecond, bool isKey) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return;
  // A host with this option makes one change of the two steps.
  const bool asOne = isKey && &NewKey::expectValue && &NewKey::settle;
  if (asOne) NewKey::expectValue();
  bool added = false;
  const FailureTranslator translator =
      FailureTranslator(env, path, name, false).afterFindingTheNode();
  translating(translator, [&] {
    const SettingsPtr parent = getNodeFromJava(env, handle, path, false);
    if (!parent) return throwNotFound(env, path, nullptr);
    const std::string entryName = zljGetStdString(env, name);
    ValidatorChoice validator;
    if (validatorFirst && validatorSecond) {
      const std::string second = zljGetStdString(env, validatorSecond);
      validator = JValidator(zljGetStdString(env, validatorFirst), second);
    }
    ZSettings::createSettingsNode(entryName, isKey, true, validator)->attachTo(parent);
    added = true;
  });
  // Within the same guard: a key must not lack its value because the JVM goes down between the two
  // steps.
  if (added && isKey) setValue(env, 0, handle, path, name, settingInfo, level);
  if (asOne) settle(env, translator);
}

void nativeSet(JNIEnv* env, jclass, jlong context, jlong handle, jobjectArray path, jstring key,
               jobject settingInfo, jstring level) {
  const NativeFrame frame(env);
  if (frame.isOpen()) setValue(env, context, handle, path, key, settingInfo, level);
}

void nativeUnset(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key, jstring level) {
  guardedVoid(
      env,
      [&] {
        const SettingsPtr node = getNodeFromJava(env, handle, path, false);
        if (!node) return throwNotFound(env, path, key);
        const std::string keyName = zljGetStdString(env, key);
        node->unset(keyName, zljGetStdString(env, level));
      },
      FailureTranslator(env, path, key, false, "Attempting to unset"));
}

void nativeAddKey(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                  jobject settingInfo, jstring level, jstring validatorFirst,
                  jstring validatorSecond) {
  addNodeHelper(env, handle, path, name, settingInfo, level, validatorFirst, validatorSecond, true);
}

void nativeAddNode(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                   jstring validatorFirst, jstring validatorSecond) {
  addNodeHelper(env, handle, path, name, nullptr, nullptr, validatorFirst, validatorSecond, false);
}

void nativeDelete(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name) {
  guardedVoid(
      env,
      [&] {
        const SettingsPtr parent = getNodeFromJava(env, handle, path, false);
        if (!parent) return throwNotFound(env, path, nullptr);
        const std::string childName = zljGetStdString(env, name);
        if (getChildFromJava(env, parent, name, false)->isKey()) {
          parent->removeKey(childName);
        } else {
          parent->removeNode(childName);
        }
      },
      FailureTranslator(env, path, name, false));
}

void nativeCopySubtree(JNIEnv* env, jclass, jlong firstHandle, jobjectArray firstPath,
                       jlong secondHandle, jobjectArray secondPath, jstring name) {
  guardedVoid(
      env,
      [&] {
        const SettingsPtr first = getNodeFromJava(env, firstHandle, firstPath, false);
        const SettingsPtr second = getNodeFromJava(env, secondHandle, secondPath, false);
        const std::string newName = zljGetStdString(env, name);
        if (!first) return throwNotFound(env, firstPath, nullptr);
        first->copySubtree(second, newName);
      },
      FailureTranslator(env, firstPath, nullptr, false));
}

jboolean nativeIsKeyNameValid(JNIEnv* env, jclass, jstring name) {
  return zlutil::settings::isIdentifierName(zljGetStdString(env, name).c_str());
}

}  // namespace nativesettings
