// One Java method to call, or one Java class to construct, described by name and signature and
// resolved at the first call.
//
//   jzi::CallJavaMethod<int> intValue("intValue", "()I", &JNIEnv::CallIntMethod);
//   int n = intValue(env, object);
//
// The objects are locals of one native call: they hold raw local references, which end with that
// call. One thread at a time.
//
// Failures: std::runtime_error with the texts named below; a lookup that fails also leaves the
// JVM's own exception pending. Exceptions thrown by the called method stay pending; the caller
// handles them.
#pragma once

#include <jni.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <variant>

namespace jzi {
namespace detail {

// Returns the identifier of an instance method. Throws "java method not found: " and the name if
// there is none. A null name counts as an empty one.
jmethodID getMethodIDOfClass(JNIEnv* env, jclass cls, const char* name, const char* signature);

// The identity of a method and the JNIEnv member function that calls it.
template <class Result, class Function>
class JavaMethod {
 protected:
  using Named = std::pair<std::string, std::string>;
  using Resolved = std::pair<jclass, jmethodID>;

  // Throws "JavaMethod::callMethod cannot be NULL." for a null function.
  JavaMethod(const char* name, const char* signature, Function call)
      : identity_(Named(name ? name : "", signature ? signature : "")), call_(checked(call)) {}
  JavaMethod(const Resolved& resolved, Function call) : identity_(resolved), call_(checked(call)) {}

  static Function checked(Function call) {
    if (!call) throw std::runtime_error("JavaMethod::callMethod cannot be NULL.");
    return call;
  }

  std::variant<Named, Resolved> identity_;
  const Function call_;
};

// The variadic JNIEnv member function that calls a method with that result.
template <class Result>
using CallFunction = Result (JNIEnv::*)(jobject, jmethodID, ...);

template <class Result>
inline constexpr bool kIsReference = std::is_convertible_v<Result, jobject>;

// CallObjectMethod returns jstring and the like as a jobject.
template <class Result>
using RawResult = std::conditional_t<kIsReference<Result>, jobject, Result>;

}  // namespace detail

// An instance method. IsReference says whether the result is a reference, which is then a local
// one.
template <class Result, bool IsReference = detail::kIsReference<Result>>
class CallJavaMethod
    : public detail::JavaMethod<Result, detail::CallFunction<detail::RawResult<Result>>> {
  static_assert(IsReference == detail::kIsReference<Result>);
  using Raw = detail::RawResult<Result>;
  using Base = detail::JavaMethod<Result, detail::CallFunction<Raw>>;

 public:
  CallJavaMethod(const char* name, const char* signature, detail::CallFunction<Raw> call)
      : Base(name, signature, call) {}

  // Resolves the method on the receiver's class at the first call. Throws "java method not found: "
  // and the name; std::bad_cast if it was resolved on a class that the receiver is not an instance
  // of.
  jmethodID resolve(JNIEnv* env, jobject receiver);

  // Calls the method on `receiver`. Throws as resolve() does.
  template <class... Arguments>
  Result operator()(JNIEnv* env, jobject receiver, Arguments... arguments) {
    const jmethodID id = resolve(env, receiver);
    const auto result = static_cast<Result>((env->*this->call_)(receiver, id, arguments...));
    // -Xcheck:jni wants this check before the next call of JNI; the caller handles the exception.
    static_cast<void>(env->ExceptionCheck());
    return result;
  }
};

// A Java class and the constructor that makes objects of it.
template <class Result>
class CreateJavaObject;

template <>
class CreateJavaObject<jobject>
    : public detail::JavaMethod<jobject, jobject (JNIEnv::*)(jclass, jmethodID, ...)> {
  using NewFunction = jobject (JNIEnv::*)(jclass, jmethodID, ...);

 public:
  // Throws "JavaMethod::env cannot be NULL.", "JavaMethod::callMethod cannot be NULL.", "java class
  // not found: " and the name, "java method not found: <init>".
  CreateJavaObject(JNIEnv* env, const char* className, const char* constructorSignature,
                   NewFunction make);

  // Returns a new object, a local reference; null with the Java exception pending if the
  // constructor threw.
  template <class... Arguments>
  jobject operator()(JNIEnv* env, Arguments... arguments) const {
    const Resolved& resolved = std::get<Resolved>(identity_);
    return (env->*call_)(resolved.first, resolved.second, arguments...);
  }

 private:
  static Resolved find(JNIEnv* env, const char* className, const char* signature, NewFunction make);
};

}  // namespace jzi

#include "bridge/java_method-inl.h"
