// New Java arrays of objects. Threads: any, with that thread's environment.
#pragma once

#include <jni.h>

#include <boost/numeric/conversion/cast.hpp>
#include <cstddef>

#include "values/java/local_frames.h"

namespace nativesettings {

// A new array of `count` elements of the class, element i being what make(i) returns (a local
// reference); the array is a local reference. Null with a Java exception pending when the JVM can
// make the array or one of the elements not. Throws boost::numeric::positive_overflow, before
// anything is made, for more than 2147483647 elements.
template <class MakeElement>
jobjectArray newObjectArray(JNIEnv* env, std::size_t count, jclass elementClass,
                            const MakeElement& make) {
  const int length = boost::numeric_cast<int>(count);
  jobjectArray array = env->NewObjectArray(length, elementClass, nullptr);
  if (!array) return nullptr;
  LocalFrames frames(env);
  for (int i = 0; i < length; ++i) {
    frames.step();
    jobject element = make(static_cast<std::size_t>(i));
    if (!element) return nullptr;
    env->SetObjectArrayElement(array, i, element);
  }
  return array;
}

}  // namespace nativesettings
