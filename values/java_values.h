// Setting values between the service's boost::any and Java's boxed objects and arrays. The kinds
// and their order are those of values/value_kinds.h, the Java classes those of
// values/class_records.h. Unsigned values travel as the bit pattern of the same width.
//
// Threads: any, with that thread's environment. Results are local references.
#pragma once

#include <jni.h>

#include <boost/any.hpp>
#include <boost/optional.hpp>

#include "values/exchange.h"
#include "values/value_variant.h"

namespace nativesettings {

// The boxed Java value; null for an empty value, and with a Java exception pending when the JVM
// cannot make the object. boost::numeric::positive_overflow for a vector longer than a Java array
// can be.
jobject getJavaValueFromKey(JNIEnv* env, const boost::any& value);

// The same in a SettingInfo; null for an empty value, too.
jobject getInfoFromKey(JNIEnv* env, const boost::any& value);

// The native value of a Java object, read as the kind that the Java class `cls` belongs to; nothing
// when there is no such kind, or when `cls` is null. std::invalid_argument ("null value") for a
// null object or a null array element. When Java fails to hand the value over, its exception is
// left pending and std::runtime_error is thrown.
boost::optional<zlutil::boostany::SettingValueVariant> getValueFromJava(JNIEnv* env, jobject value,
                                                                        jclass cls);

// What came of reading a SettingInfo. Its getValue() throws: the Java exception is left pending.
// kFailed: the value could not be handed over for another reason, such as a getType() that throws.
enum class InfoOutcome { kRead, kGetValueThrew, kFailed };

// The native value in a SettingInfo that has been handed over with other arguments: `given` is what
// is left of them to read. When it is read, `value` is what getValueFromJava gives for getValue()
// and its class or, for a null value, getType().
InfoOutcome getValueFromInfo(JNIEnv* env, jobject settingInfo, const ExchangeReader& given,
                             boost::optional<zlutil::boostany::SettingValueVariant>& value);

// The Java class of a kind in 1 .. 24; null for any other number.
jclass getJavaClassOfKind(JNIEnv* env, int kind);

}  // namespace nativesettings
