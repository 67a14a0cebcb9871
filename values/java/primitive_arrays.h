// Conversion of vectors of numbers and truth values to and from Java's primitive arrays, of the
// same width and bit for bit: unsigned elements become the signed ones of their size. Threads: any,
// with the environment of that thread.
#pragma once

#include <jni.h>

#include <boost/numeric/conversion/cast.hpp>
#include <memory>
#include <type_traits>
#include <vector>

namespace nativesettings {

// The Java primitive of an element type, and JNI's functions for arrays of it.
template <class Element>
struct PrimitiveArray;

#define PRIMITIVE_ARRAY(ELEMENT, PRIMITIVE, NAME)                                          \
  template <>                                                                              \
  struct PrimitiveArray<ELEMENT> {                                                         \
    using Primitive = PRIMITIVE;                                                           \
    using Array = PRIMITIVE##Array;                                                        \
    static Array make(JNIEnv* env, jsize length) { return env->New##NAME##Array(length); } \
    static void write(JNIEnv* env, Array array, jsize length, const Primitive* from) {     \
      env->Set##NAME##ArrayRegion(array, 0, length, from);                                 \
    }                                                                                      \
    static void read(JNIEnv* env, Array array, jsize length, Primitive* to) {              \
      env->Get##NAME##ArrayRegion(array, 0, length, to);                                   \
    }                                                                                      \
  };
PRIMITIVE_ARRAY(bool, jboolean, Boolean)
PRIMITIVE_ARRAY(signed char, jbyte, Byte)
PRIMITIVE_ARRAY(unsigned char, jbyte, Byte)
PRIMITIVE_ARRAY(short, jshort, Short)
PRIMITIVE_ARRAY(unsigned short, jshort, Short)
PRIMITIVE_ARRAY(int, jint, Int)
PRIMITIVE_ARRAY(unsigned int, jint, Int)
PRIMITIVE_ARRAY(long, jlong, Long)
PRIMITIVE_ARRAY(unsigned long, jlong, Long)
PRIMITIVE_ARRAY(float, jfloat, Float)
PRIMITIVE_ARRAY(double, jdouble, Double)
#undef PRIMITIVE_ARRAY

// Returns a new primitive array, a local reference; null with a Java exception pending if the JVM
// has no memory. Throws boost::numeric::positive_overflow for more than 2147483647 elements.
template <class Element>
jobject toPrimitiveArray(JNIEnv* env, const std::vector<Element>& values) {
  using Type = PrimitiveArray<Element>;
  const int length = boost::numeric_cast<int>(values.size());
  const auto array = Type::make(env, length);
  if (!array) return nullptr;
  if constexpr (std::is_same_v<Element, bool>) {
    const auto copy = std::make_unique<jboolean[]>(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) copy[i] = values[i];
    Type::write(env, array, length, copy.get());
  } else {
    Type::write(env, array, length,
                reinterpret_cast<const typename Type::Primitive*>(values.data()));
  }
  return array;
}

// Returns the elements of a primitive array of that element type.
template <class Element>
std::vector<Element> fromPrimitiveArray(JNIEnv* env, jobject array) {
  using Type = PrimitiveArray<Element>;
  const auto typed = static_cast<typename Type::Array>(array);
  const jsize length = env->GetArrayLength(typed);
  std::vector<Element> values(length);
  if constexpr (std::is_same_v<Element, bool>) {
    const auto copy = std::make_unique<jboolean[]>(values.size());
    Type::read(env, typed, length, copy.get());
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = copy[i] == JNI_TRUE;
  } else {
    Type::read(env, typed, length, reinterpret_cast<typename Type::Primitive*>(values.data()));
  }
  return values;
}

}  // namespace nativesettings
