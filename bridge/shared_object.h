// A Java object that native code keeps beyond one call: a JNI reference that is released when its
// last owner goes away, on whatever thread that happens.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>

namespace jzi {
namespace detail {

using MakeReference = jobject (JNIEnv::*)(jobject);
using ReleaseReference = void (JNIEnv::*)(jobject);

// Makes a reference to `object` with `make` and shares it; the last owner releases it with
// `release`, if the JVM still runs. Empty when the environment or the object is null, when the JVM
// is going down and when it has no memory for the reference. The pointer points to a slot that
// holds the reference.
boost::shared_ptr<jobject> makeSharedObject(JNIEnv* env, jobject object, MakeReference make,
                                            ReleaseReference release);

}  // namespace detail
}  // namespace jzi
