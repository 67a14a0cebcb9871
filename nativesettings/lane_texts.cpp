#include "nativesettings/lane_texts.h"

#include "base/text.h"
#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/native_row.h"
#include "values/java/java_values.h"
#include "values/value_text.h"

namespace nativesettings {
namespace {

using namespace zlutil::boostany;

// Returns null if the value is a text or an array, or of no kind.
jstring textOf(JNIEnv* env, jclass, jobject value) {
  std::optional<std::string> text;
  try {
    const auto read = getValueFromJava(env, value, env->GetObjectClass(value));
    if (!read) return nullptr;
    const boost::any any = convertVariantToAny(*read);
    withTypeOfKind(kindOfType(any.type()), [&](auto tag) {
      using Type = typename decltype(tag)::type;
      if constexpr (!kIsVector<Type>) text = textOfValue<Type>(boost::any_cast<Type>(any));
    });
    return text ? jzi::ToJava::javaString(env, *text) : nullptr;
  } catch (const std::exception&) {
    return nullptr;  // without memory for the text: Java's own error is pending
  }
}

// Returns null if the text stands for no value of the kind, which is not that of an array.
jobject valueOf(JNIEnv* env, jclass, jint kind, jstring text) {
  boost::any value;
  try {
    const std::optional<std::string> utf8 = base::utf8FromNarrow(zljGetStdString(env, text));
    if (!utf8) return nullptr;
    withTypeOfKind(kind, [&](auto tag) {
      using Type = typename decltype(tag)::type;
      if constexpr (!kIsVector<Type>) {
        if (const std::optional<Type> parsed = valueFromText<Type>(*utf8)) value = *parsed;
      }
    });
    return value.empty() ? nullptr : getJavaValueFromKey(env, value);
  } catch (const std::exception&) {
    return nullptr;  // as above
  }
}

}  // namespace

#define OBJ "Ljava/lang/Object;"
#define STR "Ljava/lang/String;"

const std::array<JNINativeMethod, 2>& laneTextMethods() {
  static const std::array<JNINativeMethod, 2> methods = {
      nativeRow("textOf", "(" OBJ ")" STR, &textOf),
      nativeRow("valueOf", "(I" STR ")" OBJ, &valueOf),
  };
  return methods;
}

#undef OBJ
#undef STR

}  // namespace nativesettings
