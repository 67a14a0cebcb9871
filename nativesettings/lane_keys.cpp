#include "nativesettings/lane_keys.h"

#include <algorithm>

#include "bridge/converters.h"
#include "nativesettings/frame.h"
#include "nativesettings/handles.h"
#include "nativesettings/native_row.h"
#include "nativesettings/paths.h"
#include "nativesettings/records.h"
#include "nativesettings/transactions.h"
#include "service/bound_key.h"
#include "service/settings.h"
#include "values/java/class_records.h"
#include "values/java/local_frames.h"
#include "values/java/object_array.h"
#include "values/java/primitive_arrays.h"
#include "values/number_bits.h"
#include "values/value_kinds.h"

namespace nativesettings {
namespace {

using namespace zlutil::boostany;
using zlutil::settings::BoundKey;

BoundKey& keyOf(jlong key) { return *reinterpret_cast<BoundKey*>(key); }

// Returns the result of the body; false if the JVM is going down or the body threw.
template <class Body>
bool attempt(JNIEnv* env, const Body& body) noexcept {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return false;
  try {
    return body();
  } catch (const std::exception&) {
    return false;
  }
}

jlong bind(JNIEnv* env, jclass, jlong root, jobjectArray path, jstring key) {
  jlong bound = 0;
  attempt(env, [&] {
    if (!&zlutil::settings::bindKey) return false;
    bound = reinterpret_cast<jlong>(
        zlutil::settings::bindKey(getRootFromJava(root), getPathFromJava(env, path, key))
            .release());
    return true;
  });
  return bound;
}

void release(JNIEnv*, jclass, jlong key) { delete &keyOf(key); }

jint levelOf(JNIEnv* env, jclass, jstring name) {
  const std::vector<std::string>& levels = allLevelNames();
  const auto found = std::find(levels.begin(), levels.end(), zljGetStdString(env, name));
  return static_cast<jint>(found - levels.begin());
}

// Touches nothing of Java, so it needs no frame; neither does setting a number.
jlong getNumber(JNIEnv*, jclass, jlong key, jint kind, jint level) {
  std::int64_t bits = 0;
  return keyOf(key).getNumber(level, kind, bits) ? bits : kNotDone;
}

jstring getText(JNIEnv* env, jclass, jlong key, jint level) {
  jstring text = nullptr;
  attempt(env, [&] {
    boost::any value;
    if (!keyOf(key).getValue(level, value)) return false;
    if (const auto* found = boost::any_cast<std::string>(&value)) {
      text = jzi::ToJava::javaString(env, *found);
    }
    return true;
  });
  return text;
}

template <class Element>
jobject toArray(JNIEnv* env, const std::vector<Element>& values) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return newObjectArray(env, values.size(), getStringClass(env),
                          [&](std::size_t i) { return jzi::ToJava::javaString(env, values[i]); });
  } else {
    return toPrimitiveArray(env, values);
  }
}

jobject getArray(JNIEnv* env, jclass, jlong key, jint kind, jint level) {
  jobject array = nullptr;
  attempt(env, [&] {
    boost::any value;
    return keyOf(key).getValue(level, value) && withTypeOfKind(kind, [&](auto tag) {
             using Type = typename decltype(tag)::type;
             if constexpr (kIsVector<Type>) {
               if (const Type* found = boost::any_cast<Type>(&value)) array = toArray(env, *found);
             }
           });
  });
  return array;
}

// Sets the value or, if the context is not 0, records the change in it.
bool setOrRecord(jlong context, BoundKey& key, int level, boost::any& value) {
  if (context == 0) return key.setAny(level, value);
  const boost::shared_ptr<zlutil::settings::Settings> entry = key.entry();
  if (!entry || value.empty()) return false;
  reinterpret_cast<SettingContext*>(context)->record(entry->getPath(), std::move(value));
  return true;
}

jboolean setNumber(JNIEnv* env, jclass, jlong context, jlong key, jint kind, jint level,
                   jlong bits) {
  if (context == 0) return keyOf(key).setNumber(level, kind, bits);
  return attempt(env, [&] {
    boost::any value;
    withTypeOfKind(kind, [&](auto tag) {
      using Type = typename decltype(tag)::type;
      if constexpr (std::is_arithmetic_v<Type>) value = fromBits<Type>(bits);
    });
    return setOrRecord(context, keyOf(key), level, value);
  });
}

jboolean setText(JNIEnv* env, jclass, jlong context, jlong key, jint level, jstring text) {
  return attempt(env, [&] {
    boost::any value = zljGetStdString(env, text);
    return setOrRecord(context, keyOf(key), level, value);
  });
}

// Throws std::invalid_argument for a null element.
std::vector<std::string> textsOf(JNIEnv* env, jobjectArray array) {
  const jsize length = env->GetArrayLength(array);
  std::vector<std::string> texts;
  texts.reserve(length);
  LocalFrames frames(env);
  for (jsize i = 0; i < length; ++i) {
    frames.step();
    const auto text = static_cast<jstring>(env->GetObjectArrayElement(array, i));
    if (!text) throw std::invalid_argument("null value");
    texts.push_back(zljGetStdString(env, text));
  }
  return texts;
}

boost::any arrayOf(JNIEnv* env, jobject array, jint kind) {
  boost::any value;
  withTypeOfKind(kind, [&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (std::is_same_v<Type, std::vector<std::string>>) {
      value = textsOf(env, static_cast<jobjectArray>(array));
    } else if constexpr (kIsVector<Type>) {
      value = fromPrimitiveArray<ElementOf<Type>>(env, array);
    }
  });
  return value;
}

jboolean setArray(JNIEnv* env, jclass, jlong context, jlong key, jint kind, jint level,
                  jobject array) {
  return attempt(env, [&] {
    boost::any value = arrayOf(env, array, kind);
    return setOrRecord(context, keyOf(key), level, value);
  });
}

jboolean unset(JNIEnv* env, jclass, jlong key, jint level) {
  return attempt(env, [&] { return keyOf(key).unset(level); });
}

}  // namespace

#define STR "Ljava/lang/String;"

const std::array<JNINativeMethod, 10>& laneKeyMethods() {
  static const std::array<JNINativeMethod, 10> methods = {
      nativeRow("bind", "(J[" STR STR ")J", &bind),
      nativeRow("release", "(J)V", &release),
      nativeRow("levelOf", "(" STR ")I", &levelOf),
      nativeRow("getNumber", "(JII)J", &getNumber),
      nativeRow("getText", "(JI)" STR, &getText),
      nativeRow("getArray", "(JII)Ljava/lang/Object;", &getArray),
      nativeRow("setNumber", "(JJIIJ)Z", &setNumber),
      nativeRow("setText", "(JJI" STR ")Z", &setText),
      nativeRow("setArray", "(JJIILjava/lang/Object;)Z", &setArray),
      nativeRow("unset", "(JI)Z", &unset),
  };
  return methods;
}

#undef STR

}  // namespace nativesettings
