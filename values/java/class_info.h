// The record of one boxed value class, with its array class and a slot for the method that reads a
// value out of it. bridge/cons_info.h says how records are filled.
#pragma once

#include <jni.h>

#include <atomic>
#include <set>

#include "bridge/cons_info.h"

namespace nativesettings {

class ClassInfo : public jzi::ConsInfo {
 public:
  using jzi::ConsInfo::ConsInfo;
  // A copy has an empty getter slot and no array class.
  ClassInfo(const ClassInfo& other) : ConsInfo(other) {}
  ~ClassInfo() override;

  // Forgets class, constructor, array class and getter. Keeps the flag that the array class was
  // resolved, on purpose: from then on getArrayClass() returns null until rearm().
  void reset() override;

  // Returns the class of arrays of this class: the cached class itself if this call resolved it,
  // otherwise a new local reference. Null after a reset.
  jclass getArrayClass(JNIEnv* env);

  // Releases the array class; a step of unloading, before reset().
  void releaseArrayClass(JNIEnv* env);

  // Lets the array class be resolved again; a step of loading.
  void rearm(JNIEnv* env);

  std::atomic<jmethodID>& getterID() { return getter_; }

 private:
  std::atomic<jclass> arrayClass_{nullptr};
  std::atomic<jmethodID> getter_{nullptr};
  std::atomic<bool> arrayClassResolved_{false};
};

}  // namespace nativesettings
