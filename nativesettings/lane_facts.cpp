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
#include "service/explanation.h"
#include "service/settings.h"
#include "values/java/class_records.h"
#include "values/java/java_values.h"
#include "values/java/object_array.h"
#include "values/value_kinds.h"

namespace nativesettings {
namespace {

using zlutil::boostany::kindName;
using zlutil::boostany::kNoValue;
using zlutil::settings::Explanation;
using zlutil::settings::LevelExplanation;
using zlutil::settings::SettingChoice;
using zlutil::settings::SettingDescription;
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

std::vector<std::string> textsOf(const std::optional<SettingLock>& lock) {
  if (!lock) return {};
  return {lock->path, lock->level, lock->reason, lock->source};
}

std::vector<std::string> textsOf(const SettingDescription& description) {
  std::vector<std::string> texts = {
      description.title,      description.text,     description.unit,      description.deprecated,
      description.replacedBy, description.replaces, description.constraint};
  for (const SettingChoice& choice : description.choices) {
    texts.push_back(choice.value);
    texts.push_back(choice.label);
  }
  return texts;
}

jobjectArray lockOf(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key) {
  return askAbout(env, root, path, key, jobjectArray{}, [&](const SettingsPtr& entry) {
    if (!&zlutil::settings::lockOf) return javaTexts(env, {});
    return javaTexts(env, textsOf(zlutil::settings::lockOf(entry)));
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

jobjectArray describe(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key) {
  return askAbout(env, root, path, key, jobjectArray{}, [&](const SettingsPtr& entry) {
    if (!&zlutil::settings::describe) return javaTexts(env, {});
    return javaTexts(env, textsOf(zlutil::settings::describe(entry)));
  });
}

// The texts of one level after its value; Java reads them by their positions.
std::vector<std::string> textsOf(const LevelExplanation& level) {
  std::vector<std::string> texts = {level.level,
                                    level.isInEffect ? "in effect" : "",
                                    level.isLocked ? "locked" : "",
                                    level.source,
                                    level.leftOut,
                                    level.readOnlyReason};
  texts.insert(texts.end(), level.unreadable.begin(), level.unreadable.end());
  return texts;
}

// A null element of the result is a level without a value; newObjectArray() makes none.
jobjectArray toJava(JNIEnv* env, const Explanation& explanation) {
  const std::string type =
      explanation.kind == kNoValue ? std::string() : std::string(kindName(explanation.kind));
  const std::size_t levels = explanation.levels.size();
  jclass object = env->FindClass("java/lang/Object");
  if (!object) return nullptr;
  jobjectArray result = env->NewObjectArray(static_cast<jsize>(3 + 2 * levels), object, nullptr);
  if (!result) return nullptr;
  LocalFrames frames(env);
  const auto put = [&](std::size_t position, jobject element) {
    env->SetObjectArrayElement(result, static_cast<jsize>(position), element);
  };
  put(0, javaTexts(env, {type, explanation.validator, explanation.validatorPath}));
  put(1, javaTexts(env, textsOf(explanation.lock)));
  put(2, javaTexts(env, textsOf(explanation.description)));
  for (std::size_t i = 0; i < levels; ++i) {
    frames.step();
    const LevelExplanation& level = explanation.levels[i];
    if (!level.value.empty()) put(3 + 2 * i, getJavaValueFromKey(env, level.value));
    put(4 + 2 * i, javaTexts(env, textsOf(level)));
    if (env->ExceptionCheck()) return nullptr;
  }
  return result;
}

jobjectArray explain(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key) {
  return askAbout(env, root, path, key, jobjectArray{}, [&](const SettingsPtr& entry) {
    if (!&zlutil::settings::explainKey) return javaTexts(env, {});
    return toJava(env, zlutil::settings::explainKey(entry));
  });
}

}  // namespace

#define STR "Ljava/lang/String;"

const std::array<JNINativeMethod, 5>& laneFactMethods() {
  static const std::array<JNINativeMethod, 5> methods = {
      nativeRow("effectiveLevel", "(J[" STR STR ")" STR, &effectiveLevel),
      nativeRow("lockOf", "(J[" STR STR ")[" STR, &lockOf),
      nativeRow("isWritable", "(J[" STR STR STR ")I", &isWritable),
      nativeRow("describe", "(J[" STR STR ")[" STR, &describe),
      nativeRow("explain", "(J[" STR STR ")[Ljava/lang/Object;", &explain),
  };
  return methods;
}

#undef STR

}  // namespace nativesettings
