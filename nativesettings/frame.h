// The frame of a native method: the shutdown guard and the catch-all, so that no C++ exception
// leaves the method and nothing is touched while the JVM goes down.
#pragma once

#include <jni.h>

#include <utility>

#include "bridge/java_layer.h"
#include "nativesettings/failures.h"

namespace nativesettings {

// The shutdown guard of one native call. If it is closed, the call does nothing and returns its
// default value; wasRefused() says so afterwards.
class NativeFrame {
 public:
  explicit NativeFrame(JNIEnv* env) : guard_(env) {}
  ~NativeFrame() { lastWasRefused_ = !isOpen(); }
  NativeFrame(const NativeFrame&) = delete;
  NativeFrame& operator=(const NativeFrame&) = delete;

  // Returns false while the JVM is going down.
  bool isOpen() const { return guard_.JVMRunning(); }

  // Returns whether the last native call that ended on the calling thread was refused because the
  // JVM was going down. Calls by a listener or a validator within that call have ended before it.
  static bool wasRefused() { return lastWasRefused_; }

 private:
  inline static thread_local bool lastWasRefused_ = false;
  const jzi::NativeShutdownGuard guard_;
};

// Runs `body()`; `translator` makes a Java exception of a C++ one. Returns the result of the body,
// or `failure` if it threw or if the JVM is going down.
template <class Result, class Body>
Result guarded(JNIEnv* env, Result failure, Body&& body, const FailureTranslator& translator) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return failure;
  Result result = failure;
  translating(translator, [&] { result = body(); });
  return result;
}

// Does the same for a method without a result.
template <class Body>
void guardedVoid(JNIEnv* env, Body&& body, const FailureTranslator& translator) {
  const NativeFrame frame(env);
  if (frame.isOpen()) translating(translator, std::forward<Body>(body));
}

}  // namespace nativesettings
