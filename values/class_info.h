// nativesettings::ClassInfo: the record of one boxed value class, with its array class. See
// bridge/cons_info.h for how records are filled.
#pragma once

#include <jni.h>

#include <atomic>

#include "bridge/cons_info.h"

namespace nativesettings {

class ClassInfo : public jzi::ConsInfo {
 public:
  using jzi::ConsInfo::ConsInfo;
  // A copy starts without the array class.
  ClassInfo(const ClassInfo& other) : ConsInfo(other) {}
  ~ClassInfo() override;

  // Forgets class, constructor and array class. Leaves the flag that the array class was
  // resolved, on purpose: from then on getArrayClass() answers null until rearm().
  void reset() override;

  // The class of arrays of this class: the cached class itself when this call resolved it,
  // afterwards a new local reference. Null after a reset.
  jclass getArrayClass(JNIEnv* env);

  // Releases the array class and lets it be resolved again; for a library that is loaded anew.
  void rearm(JNIEnv* env);

 private:
  std::atomic<jclass> arrayClass_{nullptr};
  std::atomic<bool> arrayClassResolved_{false};
};

}  // namespace nativesettings
