#include "nativesettings/lane_keys.h"

#include <algorithm>
#include <cstring>

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

template <class Type>
jlong bitsOf(Type value) {
  if constexpr (std::is_floating_point_v<Type>) {
    jlong bits = 0;
    std::memcpy(&bits, &value, sizeof(value));  // the low bytes come first
    return bits;
  } else {
    return static_cast<jlong>(value);
  }
}

template <class Type>
Type fromBits(jlong bits) {
  if constexpr (std::is_floating_point_v<Type>) {
    Type value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
  } else if constexpr (std::is_same_v<Type, bool>) {
    return bits != 0;
  } else {
    return static_cast<Type>(bits);
  }
}
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

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

// The kinds of value that one native serves.
struct Numbers {
  template <class Type>
  static constexpr bool kHas = std::is_arithmetic_v<Type>;
};
struct Arrays {
  template <class Type>
  static constexpr bool kHas = kIsVector<Type>;
};

// Calls `use(value)` if the key has a value and it is of the kind, which must be one of `Kinds`.
template <class Kinds, class Use>
bool readOfKind(JNIEnv* env, jlong key, jint kind, jint level, const Use& use) noexcept {
  return attempt(env, [&] {
    boost::any value;
    return keyOf(key).getValue(level, value) && withTypeOfKind(kind, [&](auto tag) {
             using Type = typename decltype(tag)::type;
             if constexpr (Kinds::template kHas<Type>) {
               if (const Type* found = boost::any_cast<Type>(&value)) use(*found);
             }
           });
  });
}

jlong getNumber(JNIEnv* env, jclass, jlong key, jint kind, jint level) {
  jlong bits = kNotDone;
  readOfKind<Numbers>(env, key, kind, level, [&](auto number) { bits = bitsOf(number); });
  return bits;
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
  readOfKind<Arrays>(env, key, kind, level, [&](auto& values) { array = toArray(env, values); });
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

// Sets or records the value that `make(tag of the type)` returns for the kind, one of `Kinds`.
template <class Kinds, class Make>
jboolean setOfKind(JNIEnv* env, jlong context, jlong key, jint kind, jint level,
                   const Make& make) noexcept {
  return attempt(env, [&] {
    boost::any value;
    withTypeOfKind(kind, [&](auto tag) {
      if constexpr (Kinds::template kHas<typename decltype(tag)::type>) value = make(tag);
    });
    return setOrRecord(context, keyOf(key), level, value);
  });
}

jboolean setNumber(JNIEnv* env, jclass, jlong context, jlong key, jint kind, jint level,
                   jlong bits) {
  return setOfKind<Numbers>(env, context, key, kind, level,
                            [&](auto tag) { return fromBits<typename decltype(tag)::type>(bits); });
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

jboolean setArray(JNIEnv* env, jclass, jlong context, jlong key, jint kind, jint level,
                  jobject array) {
  return setOfKind<Arrays>(env, context, key, kind, level, [&](auto tag) {
    using Element = ElementOf<typename decltype(tag)::type>;
    if constexpr (std::is_same_v<Element, std::string>) {
      return textsOf(env, static_cast<jobjectArray>(array));
    } else {
      return fromPrimitiveArray<Element>(env, array);
    }
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
