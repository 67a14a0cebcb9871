// The frame of a native method: the shutdown guard and the catch-all, so that no C++ exception
// leaves the method and nothing is touched while the JVM goes down.
#pragma once

#include <jni.h>

#include <utility>

#include "bridge/java_layer.h"
#include "nativesettings/failures.h"

namespace nativesettings {

// Runs `body()`; on a C++ exception runs `onFailure()` inside the catch clause. The result is that
// of the body, or `failure` when it threw or when the JVM is going down.
template <class Result, class Body, class OnFailure>
Result guarded(JNIEnv* env, Result failure, Body&& body, OnFailure&& onFailure) {
  const jzi::NativeShutdownGuard guard(env);
  if (!guard.JVMRunning()) return failure;
  try {
    return body();
  } catch (...) {
    onFailure();
    return failure;
  }
}

// The same for a method without a result.
template <class Body, class OnFailure>
void guardedVoid(JNIEnv* env, Body&& body, OnFailure&& onFailure) {
  guarded(
      env, false,
      [&] {
        body();
        return true;
      },
      std::forward<OnFailure>(onFailure));
}

// The handler that most methods have: the one translator.
inline auto translated(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime) {
  return [=] { handleException(env, path, key, asRuntime); };
}

}  // namespace nativesettings
