// What native code asks of JNI, noted, and Java classes and methods made to be missing.
#pragma once

#include <jni.h>

#include <set>
#include <string>
#include <vector>

namespace testing_support {

// In force from construction to destruction, for the environment's thread. One at a time.
class PatchedJava {
 public:
  // The names of classes (with slashes) and of static methods that are not found.
  explicit PatchedJava(JNIEnv* env, const std::set<std::string>& missing = {});
  ~PatchedJava();
  PatchedJava(const PatchedJava&) = delete;
  PatchedJava& operator=(const PatchedJava&) = delete;

  // The Java strings made, in order.
  const std::vector<std::string>& strings() const;
  // The classes whose natives were registered, with their number, and those not found.
  const std::vector<std::string>& classes() const;
  // How many exceptions were printed.
  int described() const;

 private:
  JNIEnv* const env_;
  const JNINativeInterface_* const original_;
};

}  // namespace testing_support
