// nativesettings::ClassInfo: the record of one boxed value class, with its array class and a slot
// for the getter that reads a value out of it. See bridge/cons_info.h for how records are filled.
#pragma once

#include <jni.h>

#include <atomic>
#include <set>

#include "bridge/cons_info.h"

namespace nativesettings {

class ClassInfo : public jzi::ConsInfo {
 public:
  using jzi::ConsInfo::ConsInfo;
  // A copy starts with an empty getter slot and without the array class.
  ClassInfo(const ClassInfo& other) : ConsInfo(other) {}
  ~ClassInfo() override;

  // Forgets class, constructor, array class and getter. Leaves the flag that the array class was
  // resolved, on purpose: from then on getArrayClass() answers null until rearm().
  void reset() override;

  // The class of arrays of this class: the cached class itself when this call resolved it,
  // afterwards a new local reference. Null after a reset.
  jclass getArrayClass(JNIEnv* env);

  // Releases the array class; part of unloading, which reset() completes.
  void releaseArrayClass(JNIEnv* env);

  // Lets the array class be resolved again; for a library that is loaded anew.
  void rearm(JNIEnv* env);

  std::atomic<jmethodID>& getterID() { return getter_; }

 private:
  std::atomic<jclass> arrayClass_{nullptr};
  std::atomic<jmethodID> getter_{nullptr};
  std::atomic<bool> arrayClassResolved_{false};
};

}  // namespace nativesettings
