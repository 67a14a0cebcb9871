// Native values to Java objects, and kinds to Java classes.
#include <boost/numeric/conversion/cast.hpp>
#include <cstring>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "values/class_records.h"
#include "values/java_helpers.h"
#include "values/java_values.h"
#include "values/local_frames.h"

namespace nativesettings {
namespace {

using namespace zlutil::boostany;

// A number as it travels to Java: a whole number's value, the bits of a float or a double.
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
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

jobject arrayOfTexts(JNIEnv* env, const std::vector<std::string>& values, jsize length) {
  jobjectArray array = env->NewObjectArray(length, getStringClass(env), nullptr);
  if (!array) return nullptr;
  LocalFrames frames(env);
  for (jsize i = 0; i < length; ++i) {
    frames.step();
    jstring element = jzi::ToJava::javaString(env, values[i]);
    if (!element) return nullptr;
    env->SetObjectArrayElement(array, i, element);
  }
  return array;
}

// The numbers' bits in one array; null with an exception pending when the JVM has no memory for it.
template <class Element>
jlongArray arrayOfBits(JNIEnv* env, const std::vector<Element>& values, jsize length) {
  jlongArray array = env->NewLongArray(length);
  if (!array) return nullptr;
  if constexpr (sizeof(Element) == sizeof(jlong)) {
    env->SetLongArrayRegion(array, 0, length, reinterpret_cast<const jlong*>(values.data()));
  } else {
    std::vector<jlong> bits(values.size());
    for (std::size_t i = 0; i < bits.size(); ++i) bits[i] = bitsOf<Element>(values[i]);
    env->SetLongArrayRegion(array, 0, length, bits.data());
  }
  return array;
}

// The Java objects of values, as they are or in a SettingInfo.
struct ToJava {
  JNIEnv* env;
  bool inInfo;

  jobject operator()(const std::string& value) const {
    return finished(jzi::ToJava::javaString(env, value));
  }

  template <class Type>
  jobject operator()(const Type& value) const {
    return (inInfo ? answers::info : answers::box)
        .object(env, jint{kKindOf<Type>}, bitsOf<Type>(value));
  }

  template <class Element>
  jobject operator()(const std::vector<Element>& values) const {
    const jsize length = boost::numeric_cast<int>(values.size());
    if constexpr (std::is_same_v<Element, std::string>) {
      return finished(arrayOfTexts(env, values, length));
    } else {
      jlongArray bits = arrayOfBits(env, values, length);
      if (!bits) return nullptr;
      return (inInfo ? answers::infoOfAll : answers::boxAll)
          .object(env, jint{kKindOf<Element>}, bits);
    }
  }

  jobject finished(jobject value) const {
    if (!value || !inInfo) return value;
    return answers::infoOf.object(env, value);
  }
};

jobject toJava(JNIEnv* env, const boost::any& value, bool inInfo) {
  jobject result = nullptr;
  withTypeOfKind(kindOfType(value.type()), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    result = ToJava{env, inInfo}(*boost::unsafe_any_cast<Type>(&value));
  });
  return result;
}

}  // namespace

jobject getJavaValueFromKey(JNIEnv* env, const boost::any& value) {
  return toJava(env, value, false);
}

jobject getInfoFromKey(JNIEnv* env, const boost::any& value) { return toJava(env, value, true); }

jclass getJavaClassOfKind(JNIEnv* env, int kind) {
  jclass result = nullptr;
  withTypeOfKind(kind, [&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (kIsVector<Type>) {
      result = recordOf<Type>().getArrayClass(env);
    } else {
      result = jzi::safeFindClass(env, globalConsInfos, recordOf<Type>());
    }
  });
  return result;
}

}  // namespace nativesettings
