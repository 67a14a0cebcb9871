// New Java arrays of objects. Threads: any, with the environment of that thread.
#pragma once

#include <jni.h>

#include <boost/numeric/conversion/cast.hpp>
#include <cstddef>

#include "values/java/local_frames.h"

namespace nativesettings {

// Returns a new array of `count` elements of the class, a local reference. make(i) returns element
// i, a local reference. Returns null with a Java exception pending if the JVM cannot make the array
// or an element. Throws boost::numeric::positive_overflow, before anything is made, for more than
// 2147483647 elements.
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
