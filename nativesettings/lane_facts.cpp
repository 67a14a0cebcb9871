#include "nativesettings/lane_facts.h"

#include <string>
#include <vector>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/handles.h"
#include "nativesettings/native_row.h"
#include "nativesettings/paths.h"
#include "nativesettings/records.h"
#include "service/locks.h"
#include "service/settings.h"
#include "values/java/class_records.h"
#include "values/java/object_array.h"

namespace nativesettings {
namespace {

using zlutil::settings::SettingLock;
using zlutil::settings::Settings;
using SettingsPtr = boost::shared_ptr<Settings>;

// Returns ask(entry) for the entry at the path; `otherwise` if there is none, the JVM is going down
// or the service failed.
template <class Result, class Ask>
Result askAbout(JNIEnv* env, jlong root, jobjectArray path, jstring key, Result otherwise,
                const Ask& ask) noexcept {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return otherwise;
  try {
    const SettingsPtr entry =
        getRootFromJava(root)->findDescendant(getPathFromJava(env, path, key));
    return entry && entry->isKey() == (key != nullptr) ? ask(entry) : otherwise;
  } catch (const std::exception&) {
    return otherwise;
  }
}

// Texts in standard UTF-8 become Java strings.
jobjectArray javaTexts(JNIEnv* env, const std::vector<std::string>& texts) {
  return newObjectArray(env, texts.size(), getStringClass(env), [&](std::size_t i) {
    return jzi::ToJava::javaString(env, base::narrowFromUtf8(texts[i]).value_or(std::string()));
  });
}

jstring effectiveLevel(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key) {
  return askAbout(env, root, path, key, jstring{}, [&](const SettingsPtr& entry) -> jstring {
    if (!&zlutil::settings::effectiveLevelOf) return nullptr;
    return jzi::ToJava::javaString(env, zlutil::settings::effectiveLevelOf(entry));
  });
}

jobjectArray lockOf(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key) {
  return askAbout(env, root, path, key, jobjectArray{}, [&](const SettingsPtr& entry) {
    std::vector<std::string> texts;
    if (&zlutil::settings::lockOf) {
      if (const std::optional<SettingLock> lock = zlutil::settings::lockOf(entry)) {
        texts = {lock->path, lock->level, lock->reason, lock->source};
      }
    }
    return javaTexts(env, texts);
  });
}

// The numbers that NativeLane.isWritable returns.
enum class Answer : jint { kNoEntry = -2, kUnknown = -1, kNo = 0, kYes = 1 };

jint isWritable(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key, jstring level) {
  const auto ask = [&](const SettingsPtr& entry) {
    if (!&zlutil::settings::isWritable) return Answer::kUnknown;
    const bool is = zlutil::settings::isWritable(entry, zljGetStdString(env, level));
    return is ? Answer::kYes : Answer::kNo;
  };
  return static_cast<jint>(askAbout(env, root, path, key, Answer::kNoEntry, ask));
}

}  // namespace

#define STR "Ljava/lang/String;"

const std::array<JNINativeMethod, 3>& laneFactMethods() {
  static const std::array<JNINativeMethod, 3> methods = {
      nativeRow("effectiveLevel", "(J[" STR STR ")" STR, &effectiveLevel),
      nativeRow("lockOf", "(J[" STR STR ")[" STR, &lockOf),
      nativeRow("isWritable", "(J[" STR STR STR ")I", &isWritable),
  };
  return methods;
}

#undef STR

}  // namespace nativesettings
