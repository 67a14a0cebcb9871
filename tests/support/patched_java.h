// Stands between native code and the JVM's function table: notes calls of JNI, counts references,
// hides classes and methods, and fails a call as the JVM does without memory.
#pragma once

#include <jni.h>

#include <set>
#include <string>
#include <vector>

namespace test {

struct JavaCalls {
  long globals = 0;                  // NewGlobalRef minus DeleteGlobalRef
  long weakGlobals = 0;              // NewWeakGlobalRef minus DeleteWeakGlobalRef
  long frames = 0;                   // PushLocalFrame minus PopLocalFrame
  long lookups = 0;                  // FindClass and Get(Static)MethodID
  long described = 0;                // ExceptionDescribe
  std::vector<std::string> strings;  // the Java strings made, in order
  // The classes whose natives were registered, with their number, and those not found.
  std::vector<std::string> classes;
};

// In force from construction to destruction, for the environment's thread. One at a time.
class PatchedJava {
 public:
  // Hides the classes (with slashes) and the static methods with the names `missing`.
  explicit PatchedJava(JNIEnv* env, const std::set<std::string>& missing = {});
  ~PatchedJava();
  PatchedJava(const PatchedJava&) = delete;
  PatchedJava& operator=(const PatchedJava&) = delete;

  // Returns the calls since construction.
  const JavaCalls& calls() const;

  // Makes the n-th call from now on that needs memory fail, 1 being the next: an OutOfMemoryError
  // is pending, and there is no result.
  void failOn(int n);

  // Returns whether that call has been made.
  bool hasFailed() const;

 private:
  JNIEnv* const env_;
  const JNINativeInterface_* const original_;
};

}  // namespace test
