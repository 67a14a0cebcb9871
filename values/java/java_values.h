// Setting values between the service's boost::any and Java's boxed objects and arrays. The kinds
// and their order are those of values/value_kinds.h, the Java classes those of
// values/java/class_records.h. Unsigned values travel as the bit pattern of the same width.
//
// Threads: any, with that thread's environment. Results are local references.
#pragma once

#include <jni.h>

#include <boost/any.hpp>
#include <boost/optional.hpp>

#include "values/value_variant.h"

namespace nativesettings {

// The boxed Java value; null for an empty value, and with a Java exception pending when the JVM
// cannot make the object. boost::numeric::positive_overflow for a vector longer than a Java array
// can be.
jobject getJavaValueFromKey(JNIEnv* env, const boost::any& value);

// The native value of a Java object, read as the first kind whose Java class `cls` is assignable
// to; nothing when there is no such kind, or when `cls` is null. std::invalid_argument ("null
// value") for a null object or a null array element. When a getter of the object throws, the Java
// exception is left pending and std::runtime_error is thrown.
boost::optional<zlutil::boostany::SettingValueVariant> getValueFromJava(JNIEnv* env, jobject value,
                                                                        jclass cls);

// The Java class of a kind in 1 .. 24; null for any other number.
jclass getJavaClassOfKind(JNIEnv* env, int kind);

}  // namespace nativesettings
