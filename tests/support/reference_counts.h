// Counts the references that a piece of native code makes and releases on one thread, by standing
// between it and the JVM's function table for a while.
#pragma once

#include <jni.h>

namespace testing_support {

struct ReferenceCounts {
  long globals = 0;       // NewGlobalRef minus DeleteGlobalRef
  long weakGlobals = 0;   // NewWeakGlobalRef minus DeleteWeakGlobalRef
  long frames = 0;        // PushLocalFrame minus PopLocalFrame
  long classLookups = 0;  // FindClass and Get(Static)MethodID calls
};

// In force from construction to destruction, for the environment's thread. One at a time.
class CountReferences {
 public:
  explicit CountReferences(JNIEnv* env);
  ~CountReferences();
  CountReferences(const CountReferences&) = delete;
  CountReferences& operator=(const CountReferences&) = delete;

  const ReferenceCounts& counts() const;

 private:
  JNIEnv* const env_;
  const JNINativeInterface_* const original_;
};

}  // namespace testing_support
