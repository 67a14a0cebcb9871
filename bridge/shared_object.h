// A Java object that native code holds beyond one call: a JNI reference that its last owner
// releases, on any thread.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>

namespace jzi {
namespace detail {

using MakeReference = jobject (JNIEnv::*)(jobject);
using ReleaseReference = void (JNIEnv::*)(jobject);

// Makes a reference to `object` with `make` and shares it; the last owner releases it with
// `release`, if the JVM still runs. Returns an empty pointer if the environment or the object is
// null, if the JVM is going down, and if it has no memory for the reference. The pointer points to
// a slot that holds the reference.
boost::shared_ptr<jobject> makeSharedObject(JNIEnv* env, jobject object, MakeReference make,
                                            ReleaseReference release);

}  // namespace detail
}  // namespace jzi
