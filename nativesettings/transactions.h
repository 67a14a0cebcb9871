// Transaction contexts: value changes that are recorded first and then committed or validated
// together. Java owns a context through its address; nativeCreateTransactionContext makes it and
// nativeDeleteTransactionContext deletes it once. One thread at a time uses a context.
#pragma once

#include <jni.h>

#include <boost/any.hpp>
#include <string>
#include <utility>
#include <vector>

namespace nativesettings {

class SettingContext {
 public:
  SettingContext() = default;
  virtual ~SettingContext();
  SettingContext(const SettingContext&) = delete;
  SettingContext& operator=(const SettingContext&) = delete;

  // Appends a change of the key with that full path. The same key may be recorded more than once;
  // its last change counts.
  void record(std::string path, boost::any value);

  // The recorded changes: paths and values.
  const std::vector<std::pair<std::string, boost::any>>& changes() const { return changes_; }

  // Applies (`commit`) or only validates all recorded changes against the process's settings root.
  // Returns a list of SettingValidity, one per problem, as a local reference; null if there are
  // none. The recorded changes stay. If there is no root, a RuntimeException is pending and the
  // result is null.
  jobject commitOrValidate(JNIEnv* env, bool commit, const std::string& level) const;

 private:
  std::vector<std::pair<std::string, boost::any>> changes_;
};

// Returns a new context, owned by the caller. No frame: nothing here can fail.
jlong nativeCreateTransactionContext(JNIEnv*, jclass);

// Deletes an (owned) context; 0 is ignored. No frame: nothing here can fail.
void nativeDeleteTransactionContext(JNIEnv*, jclass, jlong context);

// Return the problems of committing or validating a (borrowed) context; null if there are none or
// if the JVM is going down. There is no catch clause: the service reports failures as problems.
jobject nativeCommitTransaction(JNIEnv* env, jclass, jlong context, jstring level);
jobject nativeValidateTransaction(JNIEnv* env, jclass, jlong context, jstring level);

}  // namespace nativesettings
