#include "nativesettings/lane_changes.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/handles.h"
#include "nativesettings/native_row.h"
#include "nativesettings/transactions.h"
#include "service/failures.h"
#include "service/tree_changes.h"
#include "values/java/class_records.h"
#include "values/java/java_values.h"
#include "values/java/object_array.h"

namespace nativesettings {
namespace {

using zlutil::settings::JValidator;
using zlutil::settings::SettingsProblems;
using zlutil::settings::TreeChange;

constexpr jint kChangeFrame = 8;

// The arrays of one call, with an element for each change.
struct ChangeArrays {
  jobjectArray paths, targets, values, levels, validators;
};

std::string textAt(JNIEnv* env, jobjectArray array, jsize index) {
  const auto text = static_cast<jstring>(env->GetObjectArrayElement(array, index));
  return text ? zljGetStdString(env, text) : std::string();
}

boost::any valueAt(JNIEnv* env, jobjectArray values, jsize index) {
  jobject value = env->GetObjectArrayElement(values, index);
  if (!value) return {};
  const auto read = getValueFromJava(env, value, env->GetObjectClass(value));
  if (!read) throw std::invalid_argument("no setting has values of this class");
  return zlutil::boostany::convertVariantToAny(*read);
}

TreeChange changeAt(JNIEnv* env, const ChangeArrays& arrays, jsize index, jint what) {
  const zljLocalReferenceFrame frame(env, kChangeFrame);
  TreeChange change{static_cast<TreeChange::What>(what), textAt(env, arrays.paths, index)};
  change.target = textAt(env, arrays.targets, index);
  change.value = valueAt(env, arrays.values, index);
  change.level = textAt(env, arrays.levels, index);
  const auto validator =
      static_cast<jobjectArray>(env->GetObjectArrayElement(arrays.validators, index));
  if (validator) {
    change.validator = JValidator(textAt(env, validator, 0), textAt(env, validator, 1));
  }
  return change;
}

std::vector<TreeChange> changesFromJava(JNIEnv* env, jlong context, const std::string& level,
                                        jintArray what, const ChangeArrays& arrays) {
  std::vector<TreeChange> changes;
  if (context != 0) {
    for (const auto& [path, value] : reinterpret_cast<SettingContext*>(context)->changes()) {
      changes.push_back({TreeChange::kSet, path, {}, value, level});
    }
  }
  std::vector<jint> kinds(static_cast<std::size_t>(env->GetArrayLength(what)));
  env->GetIntArrayRegion(what, 0, static_cast<jsize>(kinds.size()), kinds.data());
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    changes.push_back(changeAt(env, arrays, static_cast<jsize>(i), kinds[i]));
    if (changes.back().level.empty()) changes.back().level = level;
  }
  return changes;
}

bool isOfStore(const std::exception& failure) {
  const auto* const message = dynamic_cast<const IMsgIDException*>(&failure);
  return message && message->GetMsgID().name() == std::string_view("StoreFailure");
}

jobjectArray javaTexts(JNIEnv* env, const std::vector<std::string>& texts) {
  return newObjectArray(env, texts.size(), getStringClass(env),
                        [&](std::size_t i) { return jzi::ToJava::javaString(env, texts[i]); });
}

jobjectArray applyChanges(JNIEnv* env, jclass, jlong root, jlong context, jstring level,
                          jboolean isTrial, jintArray what, jobjectArray paths,
                          jobjectArray targets, jobjectArray values, jobjectArray levels,
                          jobjectArray validators) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return nullptr;
  std::vector<std::string> texts;
  try {
    if (!&zlutil::settings::applyChanges) {
      texts = {"", "the settings service has no such operation"};
    } else {
      const std::vector<TreeChange> changes =
          changesFromJava(env, context, zljGetStdString(env, level), what,
                          {paths, targets, values, levels, validators});
      for (const auto& [path, reason] :
           zlutil::settings::applyChanges(getRootFromJava(root), changes, isTrial == JNI_TRUE)) {
        texts.push_back(path);
        texts.push_back(reason);
      }
    }
  } catch (const std::exception& failure) {
    if (env->ExceptionCheck()) return nullptr;
    if (!isOfStore(failure)) texts.emplace_back();
    texts.emplace_back(failure.what());
  }
  return javaTexts(env, texts);
}

}  // namespace

#define STR "Ljava/lang/String;"

const std::array<JNINativeMethod, 1>& laneChangeMethods() {
  static const std::array<JNINativeMethod, 1> methods = {
      nativeRow("applyChanges",
                "(JJ" STR "Z[I[" STR "[" STR "[Ljava/lang/Object;[" STR "[[" STR ")[" STR,
                &applyChanges),
  };
  return methods;
}

#undef STR

}  // namespace nativesettings
