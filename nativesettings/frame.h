// The frame of a native method: the shutdown guard and the catch-all, so that no C++ exception
// leaves the method and nothing is touched while the JVM goes down.
#pragma once

#include <jni.h>

#include <utility>

#include "bridge/java_layer.h"
#include "nativesettings/failures.h"

namespace nativesettings {

// Runs `body()`; a C++ exception becomes a Java exception as `failed` says. The result is that of
// the body, or `failure` when it threw or when the JVM is going down.
template <class Result, class Body>
Result guarded(JNIEnv* env, Result failure, Body&& body, const Failed& failed) {
  const jzi::NativeShutdownGuard guard(env);
  if (!guard.JVMRunning()) return failure;
  Result result = failure;
  translating(failed, [&] { result = body(); });
  return result;
}

// The same for a method without a result.
template <class Body>
void guardedVoid(JNIEnv* env, Body&& body, const Failed& failed) {
  const jzi::NativeShutdownGuard guard(env);
  if (guard.JVMRunning()) translating(failed, std::forward<Body>(body));
}

}  // namespace nativesettings
