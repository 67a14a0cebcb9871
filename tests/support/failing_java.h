// Fails one of the calls that native code makes of the JVM, as the JVM fails it when it has no
// memory left: an OutOfMemoryError is pending, and there is no result.
#pragma once

#include <jni.h>

namespace testing_support {

// In force from construction to destruction, for the environment's thread. One at a time.
class FailingJava {
 public:
  // The n-th call that needs memory fails; 1 is the next one.
  FailingJava(JNIEnv* env, int n);
  ~FailingJava();
  FailingJava(const FailingJava&) = delete;
  FailingJava& operator=(const FailingJava&) = delete;

  // False while there have been fewer calls.
  bool hasFailed() const;

 private:
  JNIEnv* const env_;
  const JNINativeInterface_* const original_;
};

}  // namespace testing_support
