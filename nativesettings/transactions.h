// Transaction contexts: value changes that are recorded first and then committed or validated
// together. Java owns a context through its address; it is created by
// nativeCreateTransactionContext and deleted once by nativeDeleteTransactionContext. A context is
// used by one thread at a time.
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

  // Appends a change of the key with that full path. Nothing merges: the same key may be recorded
  // more than once, and the last change stays.
  void record(std::string path, boost::any value);

  // Applies (`commit`) or only validates all recorded changes against the process's settings root.
  // A list of SettingValidity, one per problem, as a local reference; null when there are none. The
  // recorded changes stay. With no root a RuntimeException is pending and the result null.
  jobject commitOrValidate(JNIEnv* env, bool commit, const std::string& level) const;

 private:
  std::vector<std::pair<std::string, boost::any>> changes_;
};

// A new context, owned by the caller. No frame: nothing here can fail.
jlong nativeCreateTransactionContext(JNIEnv*, jclass);

// Deletes an (owned) context; 0 is ignored. No frame: nothing here can fail.
void nativeDeleteTransactionContext(JNIEnv*, jclass, jlong context);

// Problems of committing or validating a (borrowed) context; null when there are none and when the
// JVM is going down. Without a catch clause: the service reports failures as problems.
jobject nativeCommitTransaction(JNIEnv* env, jclass, jlong context, jstring level);
jobject nativeValidateTransaction(JNIEnv* env, jclass, jlong context, jstring level);

}  // namespace nativesettings
