// Conversion of setting values between the service's boost::any and Java's boxed objects and
// arrays. values/value_kinds.h lists the kinds, values/java/class_records.h their Java classes. An
// unsigned value becomes the signed one with the same bits.
//
// Threads: any, with the environment of that thread. Results are local references.
#pragma once

#include <jni.h>

#include <boost/any.hpp>
#include <boost/optional.hpp>

#include "values/value_variant.h"

namespace nativesettings {

// Returns the boxed Java value; null for an empty value, and with a Java exception pending if the
// JVM cannot make the object. Throws boost::numeric::positive_overflow for a vector longer than a
// Java array can be.
jobject getJavaValueFromKey(JNIEnv* env, const boost::any& value);

// Returns the native value of a Java object, read as the first kind whose Java class `cls` is
// assignable to; nothing if there is no such kind, or if `cls` is null. Throws
// std::invalid_argument ("null value") for a null object or a null array element, and
// std::runtime_error, with the Java exception left pending, if a getter of the object throws.
boost::optional<zlutil::boostany::SettingValueVariant> getValueFromJava(JNIEnv* env, jobject value,
                                                                        jclass cls);

// Returns the Java class of a kind in 1 .. 24; null for any other number.
jclass getJavaClassOfKind(JNIEnv* env, int kind);

}  // namespace nativesettings
