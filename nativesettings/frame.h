// The frame of a native method: the shutdown guard and the catch-all, so that no C++ exception
// leaves the method and nothing is touched while the JVM goes down.
#pragma once

#include <jni.h>

#include <utility>

#include "bridge/java_layer.h"
#include "nativesettings/failures.h"

namespace nativesettings {

// The shutdown guard of one native call. A call that finds it closed does nothing and returns its
// default value; wasRefused() tells afterwards.
class NativeFrame {
 public:
  explicit NativeFrame(JNIEnv* env) : guard_(env) {}
  ~NativeFrame() { lastWasRefused_ = !isOpen(); }
  NativeFrame(const NativeFrame&) = delete;
  NativeFrame& operator=(const NativeFrame&) = delete;

  // False while the JVM is going down.
  bool isOpen() const { return guard_.JVMRunning(); }

  // Whether the last native call that ended on the calling thread was refused because the JVM was
  // going down. Calls that a listener or a validator made meanwhile have ended before it.
  static bool wasRefused() { return lastWasRefused_; }

 private:
  inline static thread_local bool lastWasRefused_ = false;
  const jzi::NativeShutdownGuard guard_;
};

// Runs `body()`; a C++ exception becomes a Java exception as `failed` says. Returns the result of
// the body, or `failure` when it threw or when the JVM is going down.
template <class Result, class Body>
Result guarded(JNIEnv* env, Result failure, Body&& body, const FailureTranslator& failed) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return failure;
  Result result = failure;
  translating(failed, [&] { result = body(); });
  return result;
}

// The same for a method without a result.
template <class Body>
void guardedVoid(JNIEnv* env, Body&& body, const FailureTranslator& failed) {
  const NativeFrame frame(env);
  if (frame.isOpen()) translating(failed, std::forward<Body>(body));
}

}  // namespace nativesettings
