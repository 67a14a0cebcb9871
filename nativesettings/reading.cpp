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
#include "values/class_records.h"
#include "values/exchange.h"
#include "values/java_values.h"

namespace nativesettings {

using namespace KORVEN::settings::core;
using zlutil::settings::Failure;
using zlutil::settings::Settings;
using SettingsPtr = boost::shared_ptr<Settings>;

namespace {

// A SettingInfo that says which class the key's values have, if the service knows.
jobject typeOnly(JNIEnv* env, const Settings& node, const std::string& key) {
  const boost::optional<int> kind = node.getKeyType(key);
  jclass cls = kind ? getJavaClassOfKind(env, *kind) : nullptr;
  return jzi::construct(env, globalConsInfos, &settingInfoClassCons, cls);
}

jobjectArray namesOf(JNIEnv* env, std::vector<SettingsPtr>::const_iterator first,
                     std::vector<SettingsPtr>::const_iterator last) {
  const std::size_t count = last - first;
  std::string dotted;
  for (; first != last; ++first) {
    dotted += (*first)->getName();
    dotted += '.';
  }
  return getNamesAsJArray(env, dotted, count);
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

jobject nativeGet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key,
                  jstring level) {
  return guarded(
      env, jobject{},
      [&]() -> jobject {
        const GivenArguments given(env, path, key, level);
        const SettingsPtr node = getEntry(handle, given.path, false);
        if (!node) {
          throwNotFound(env, path, key);
          return nullptr;
        }
        jobject info = getInfoFromKey(env, node->getValue(given.key, given.level));
        if (info) return info;
        return env->ExceptionCheck() ? nullptr : typeOnly(env, *node, given.key);
      },
      Failed(env, path, key, false));
}

jstring nativeGetLevel(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key) {
  return guarded(
      env, jstring{},
      [&]() -> jstring {
        const GivenArguments given(env, path, key, nullptr);
        const SettingsPtr node = getEntry(handle, given.path, false);
        if (!node) {
          throwNotFound(env, path, key);
          return nullptr;
        }
        const std::vector<std::string>& levels = allLevelNames();
        const auto found =
            std::find_if(levels.begin(), levels.end(),
                         [&](const std::string& level) { return node->isSet(given.key, level); });
        return found == levels.end() ? nullptr : jzi::ToJava::javaString(env, *found);
      },
      Failed(env, path, key, false));
}

jboolean nativeIsSet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key,
                     jstring level) {
  return guarded(
      env, jboolean{JNI_FALSE},
      [&]() -> jboolean {
        const GivenArguments given(env, path, key, level);
        const SettingsPtr node = getEntry(handle, given.path, false);
        if (!node) return JNI_FALSE;
        try {
          return node->isSet(given.key, given.level);
        } catch (const Failure<NoSuchKey>&) {
        } catch (const Failure<NoSuchNode>&) {
        } catch (const Failure<NotANodeName>&) {
        } catch (const Failure<NotAKeyName>&) {
        }
        return JNI_FALSE;  // what does not exist is not set
      },
      Failed(env, path, key, true));
}

jboolean nativeExists(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key) {
  return guarded(
      env, jboolean{JNI_FALSE},
      [&]() -> jboolean {
        const SettingsPtr node = getNodeFromJava(env, handle, path, false);
        if (!node) return JNI_FALSE;
        if (!key) return JNI_TRUE;
        try {
          return getChildFromJava(env, node, key, false)->isKey();
        } catch (const Failure<NoSuchKey>&) {
        } catch (const Failure<NoSuchNode>&) {
        }
        return JNI_FALSE;
      },
      Failed(env, path, key, true));
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
      Failed(env, path, name, false));
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
        return namesOf(env, first, last);
      },
      Failed(env, path, nullptr, true));
}

}  // namespace nativesettings
