#include "nativesettings/reading.h"

#include <algorithm>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/handles.h"
#include "nativesettings/paths.h"
#include "nativesettings/records.h"
#include "service/failures.h"
#include "service/settings.h"
#include "values/java/class_records.h"
#include "values/java/java_values.h"
#include "values/java/object_array.h"

namespace nativesettings {

using namespace KORVEN::settings::core;
using zlutil::settings::Failure;
using zlutil::settings::Settings;
using SettingsPtr = boost::shared_ptr<Settings>;

namespace {

// Returns a SettingInfo with the class of the key's values, null if the service does not know it.
jobject typeOnly(JNIEnv* env, const SettingsPtr& node, jstring key) {
  const boost::optional<int> kind = node->getKeyType(zljGetStdString(env, key));
  jclass cls = kind ? getJavaClassOfKind(env, *kind) : nullptr;
  return jzi::construct(env, globalConsInfos, &settingInfoClassCons, cls);
}

}  // namespace

SettingsPtr getChildFromJava(JNIEnv* env, const SettingsPtr& parent, jstring name, bool wantKey) {
  const std::string childName = zljGetStdString(env, name);
  SettingsPtr child = parent->getChild(childName);
  if (child && wantKey && !child->isKey()) {
    throw Failure<NotAKeyName>(parent->getName(), childName);
  }
  if (child) return child;
  if (wantKey) throw Failure<NoSuchKey>(parent->getName(), childName);
  throw Failure<NoSuchNode>(parent->getName(), childName);
}

boost::any getKeyValueFromJava(JNIEnv* env, const SettingsPtr& node, jstring key, jstring level) {
  const std::string keyName = zljGetStdString(env, key);
  return node->getValue(keyName, level ? zljGetStdString(env, level) : std::string());
}

jobject nativeGet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key,
                  jstring level) {
  return guarded(
      env, jobject{},
      [&]() -> jobject {
        const SettingsPtr node = getNodeFromJava(env, handle, path, false);
        if (!node) {
          throwNotFound(env, path, key);
          return nullptr;
        }
        jobject value = getJavaValueFromKey(env, getKeyValueFromJava(env, node, key, level));
        if (value) return jzi::construct(env, globalConsInfos, &settingInfoObjCons, value);
        return env->ExceptionCheck() ? nullptr : typeOnly(env, node, key);
      },
      FailureTranslator(env, path, key, false));
}

jstring nativeGetLevel(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key) {
  return guarded(
      env, jstring{},
      [&]() -> jstring {
        const SettingsPtr node = getNodeFromJava(env, handle, path, false);
        if (!node) {
          throwNotFound(env, path, key);
          return nullptr;
        }
        const std::string name = zljGetStdString(env, key);
        const std::vector<std::string>& levels = allLevelNames();
        const auto found =
            std::find_if(levels.begin(), levels.end(),
                         [&](const std::string& level) { return node->isSet(name, level); });
        return found == levels.end() ? nullptr : jzi::ToJava::javaString(env, *found);
      },
      FailureTranslator(env, path, key, false));
}

jboolean nativeIsSet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key,
                     jstring level) {
  return guarded(
      env, jboolean{JNI_FALSE},
      [&]() -> jboolean {
        try {
          const SettingsPtr node = getNodeFromJava(env, handle, path, false);
          return node && node->isSet(zljGetStdString(env, key), zljGetStdString(env, level));
        } catch (const Failure<NoSuchKey>&) {
        } catch (const Failure<NoSuchNode>&) {
        } catch (const Failure<NotANodeName>&) {
        } catch (const Failure<NotAKeyName>&) {
        }
        return JNI_FALSE;  // a missing entry is not set
      },
      FailureTranslator(env, path, key, true));
}

jboolean nativeExists(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key) {
  return guarded(
      env, jboolean{JNI_FALSE},
      [&]() -> jboolean {
        try {
          const SettingsPtr node = getNodeFromJava(env, handle, path, false);
          if (!node || node->isKey()) return JNI_FALSE;
          return !key || getChildFromJava(env, node, key, false)->isKey();
        } catch (const Failure<NoSuchKey>&) {
        } catch (const Failure<NoSuchNode>&) {
        }
        return JNI_FALSE;
      },
      FailureTranslator(env, path, key, true));
}

jboolean nativeIsChildNode(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name) {
  return guarded(
      env, jboolean{JNI_FALSE},
      [&]() -> jboolean {
        const std::vector<std::string> names = getPathFromJava(env, path, name);
        const SettingsPtr entry = getRootFromJava(handle)->findDescendant(names);
        if (entry) return !entry->isKey();
        throwNotFound(env, path, name);
        return JNI_FALSE;
      },
      FailureTranslator(env, path, name, false));
}

jobjectArray nativeGetChildren(JNIEnv* env, jclass, jlong handle, jobjectArray path,
                               jint selector) {
  return guarded(
      env, jobjectArray{},
      [&]() -> jobjectArray {
        const SettingsPtr node = getNodeFromJava(env, handle, path, false);
        if (!node) {
          throwNotFound(env, path, nullptr);
          return nullptr;
        }
        std::vector<SettingsPtr> children = node->getChildren();
        auto first = children.begin();
        auto last = children.end();
        if (selector != 0) {
          const auto nodes =
              std::partition(first, last, [](const SettingsPtr& child) { return child->isKey(); });
          (selector > 0 ? last : first) = nodes;
        }
        return newObjectArray(env, last - first, getStringClass(env), [&](std::size_t i) {
          return jzi::ToJava::javaString(env, first[i]->getName());
        });
      },
      FailureTranslator(env, path, nullptr, true));
}

}  // namespace nativesettings
