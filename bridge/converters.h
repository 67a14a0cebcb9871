// Generic conversions between native values and Java's boxes and strings. They widen an unsigned
// type to the next larger signed Java type. Setting values have other conversions (values/java/),
// which use only those of strings here.
//
// Results of the ToJava converters are local references. Exceptions: std::runtime_error of
// bridge/java_method.h; boost::numeric::bad_numeric_cast if a value does not fit the target type.
#pragma once

#include <jni.h>

#include <string>

namespace jzi {
namespace ToCPP {
namespace detail {

// Returns the value of a boxed object, read through the getter that fits T: one of bool, signed
// char, unsigned char, short, unsigned short, int, unsigned int, long, unsigned long, float, double
// and std::string ("toString"). An unsigned T is range-checked; unsigned long is at most 2^63-1.
template <class T>
struct ConvertFromJavaObject {
  T operator()(JNIEnv* env, jobject object) const;
};

// Returns a JNI primitive as the native type, the text of a string, or toString() of another
// object.
inline bool convertJavaPrimitiveToCPP(JNIEnv*, jboolean value) { return value == JNI_TRUE; }
inline signed char convertJavaPrimitiveToCPP(JNIEnv*, jbyte value) { return value; }
inline short convertJavaPrimitiveToCPP(JNIEnv*, jshort value) { return value; }
inline int convertJavaPrimitiveToCPP(JNIEnv*, jint value) { return value; }
inline long convertJavaPrimitiveToCPP(JNIEnv*, jlong value) { return value; }
inline float convertJavaPrimitiveToCPP(JNIEnv*, jfloat value) { return value; }
inline double convertJavaPrimitiveToCPP(JNIEnv*, jdouble value) { return value; }
std::string convertJavaPrimitiveToCPP(JNIEnv* env, jstring value);
std::string convertJavaPrimitiveToCPP(JNIEnv* env, jobject value);

}  // namespace detail
}  // namespace ToCPP

namespace ToJava {
namespace detail {

// Returns a boxed object of the value: Boolean, Byte, Short, Integer, Long, Float, Double, String;
// an unsigned T as the box of the next larger signed type, unsigned long as a Long of at most
// 2^63-1.
template <class T>
struct ConvertToJavaObject {
  jobject operator()(JNIEnv* env, const T& value) const;
};

}  // namespace detail

// Returns narrow text as a new Java string, a local reference; null with an exception pending if
// the JVM has no memory. A short form of ConvertToJavaObject<std::string>.
jstring javaString(JNIEnv* env, const std::string& text);

}  // namespace ToJava
}  // namespace jzi
