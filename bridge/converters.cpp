#include "bridge/converters.h"

#include <boost/numeric/conversion/cast.hpp>

#include "bridge/java_layer.h"
#include "bridge/java_method.h"

namespace jzi {
namespace ToCPP {
namespace detail {
namespace {

constexpr jint kToStringFrame = 8;

}  // namespace

std::string convertJavaPrimitiveToCPP(JNIEnv* env, jstring value) {
  const char* bytes = env->GetStringUTFChars(value, nullptr);
  if (!bytes) return "";
  std::string text(bytes);
  env->ReleaseStringUTFChars(value, bytes);
  return text;
}

std::string convertJavaPrimitiveToCPP(JNIEnv* env, jobject value) {
  CallJavaMethod<jstring> toString("toString", "()Ljava/lang/String;", &JNIEnv::CallObjectMethod);
  jstring text = toString(env, value);
  return text && !env->ExceptionCheck() ? convertJavaPrimitiveToCPP(env, text) : "";
}

template <>
bool ConvertFromJavaObject<bool>::operator()(JNIEnv* env, jobject object) const {
  return CallJavaMethod<jboolean>("booleanValue", "()Z", &JNIEnv::CallBooleanMethod)(env, object) ==
         JNI_TRUE;
}

template <>
signed char ConvertFromJavaObject<signed char>::operator()(JNIEnv* env, jobject object) const {
  return CallJavaMethod<jbyte>("byteValue", "()B", &JNIEnv::CallByteMethod)(env, object);
}

template <>
short ConvertFromJavaObject<short>::operator()(JNIEnv* env, jobject object) const {
  return CallJavaMethod<jshort>("shortValue", "()S", &JNIEnv::CallShortMethod)(env, object);
}

template <>
int ConvertFromJavaObject<int>::operator()(JNIEnv* env, jobject object) const {
  return CallJavaMethod<jint>("intValue", "()I", &JNIEnv::CallIntMethod)(env, object);
}

template <>
long ConvertFromJavaObject<long>::operator()(JNIEnv* env, jobject object) const {
  return CallJavaMethod<jlong>("longValue", "()J", &JNIEnv::CallLongMethod)(env, object);
}

template <>
float ConvertFromJavaObject<float>::operator()(JNIEnv* env, jobject object) const {
  return CallJavaMethod<jfloat>("floatValue", "()F", &JNIEnv::CallFloatMethod)(env, object);
}

template <>
double ConvertFromJavaObject<double>::operator()(JNIEnv* env, jobject object) const {
  return CallJavaMethod<jdouble>("doubleValue", "()D", &JNIEnv::CallDoubleMethod)(env, object);
}

template <>
unsigned char ConvertFromJavaObject<unsigned char>::operator()(JNIEnv* env, jobject object) const {
  return boost::numeric_cast<unsigned char>(ConvertFromJavaObject<short>()(env, object));
}

template <>
unsigned short ConvertFromJavaObject<unsigned short>::operator()(JNIEnv* env,
                                                                 jobject object) const {
  return boost::numeric_cast<unsigned short>(ConvertFromJavaObject<int>()(env, object));
}

template <>
unsigned int ConvertFromJavaObject<unsigned int>::operator()(JNIEnv* env, jobject object) const {
  return boost::numeric_cast<unsigned int>(ConvertFromJavaObject<long>()(env, object));
}

template <>
unsigned long ConvertFromJavaObject<unsigned long>::operator()(JNIEnv* env, jobject object) const {
  return boost::numeric_cast<unsigned long>(ConvertFromJavaObject<long>()(env, object));
}

template <>
std::string ConvertFromJavaObject<std::string>::operator()(JNIEnv* env, jobject object) const {
  const zljLocalReferenceFrame frame(env, kToStringFrame);
  return convertJavaPrimitiveToCPP(env, object);
}

}  // namespace detail
}  // namespace ToCPP

namespace ToJava {
namespace detail {
namespace {

template <class Primitive>
jobject box(JNIEnv* env, const char* className, const char* signature, Primitive value) {
  return CreateJavaObject<jobject>(env, className, signature, &JNIEnv::NewObject)(env, value);
}

}  // namespace

template <>
jobject ConvertToJavaObject<bool>::operator()(JNIEnv* env, const bool& value) const {
  return box(env, "java/lang/Boolean", "(Z)V", static_cast<jboolean>(value));
}

template <>
jobject ConvertToJavaObject<signed char>::operator()(JNIEnv* env, const signed char& value) const {
  return box(env, "java/lang/Byte", "(B)V", static_cast<jbyte>(value));
}

template <>
jobject ConvertToJavaObject<short>::operator()(JNIEnv* env, const short& value) const {
  return box(env, "java/lang/Short", "(S)V", static_cast<jshort>(value));
}

template <>
jobject ConvertToJavaObject<int>::operator()(JNIEnv* env, const int& value) const {
  return box(env, "java/lang/Integer", "(I)V", static_cast<jint>(value));
}

template <>
jobject ConvertToJavaObject<long>::operator()(JNIEnv* env, const long& value) const {
  return box(env, "java/lang/Long", "(J)V", static_cast<jlong>(value));
}

template <>
jobject ConvertToJavaObject<float>::operator()(JNIEnv* env, const float& value) const {
  return box(env, "java/lang/Float", "(F)V", static_cast<jfloat>(value));
}

template <>
jobject ConvertToJavaObject<double>::operator()(JNIEnv* env, const double& value) const {
  return box(env, "java/lang/Double", "(D)V", static_cast<jdouble>(value));
}

template <>
jobject ConvertToJavaObject<unsigned char>::operator()(JNIEnv* env,
                                                       const unsigned char& value) const {
  return ConvertToJavaObject<short>()(env, value);
}

template <>
jobject ConvertToJavaObject<unsigned short>::operator()(JNIEnv* env,
                                                        const unsigned short& value) const {
  return ConvertToJavaObject<int>()(env, value);
}

template <>
jobject ConvertToJavaObject<unsigned int>::operator()(JNIEnv* env,
                                                      const unsigned int& value) const {
  return ConvertToJavaObject<long>()(env, value);
}

template <>
jobject ConvertToJavaObject<unsigned long>::operator()(JNIEnv* env,
                                                       const unsigned long& value) const {
  return ConvertToJavaObject<long>()(env, boost::numeric_cast<long>(value));
}

template <>
jobject ConvertToJavaObject<std::string>::operator()(JNIEnv* env, const std::string& value) const {
  // NewStringUTF makes the object that the String constructor would only copy.
  return env->NewStringUTF(value.c_str());
}

}  // namespace detail

jstring javaString(JNIEnv* env, const std::string& text) {
  return static_cast<jstring>(detail::ConvertToJavaObject<std::string>()(env, text));
}

}  // namespace ToJava
}  // namespace jzi
