// Settings handles: a Java long that is the address of a heap-allocated shared pointer to a node.
// Each handle owns one strong reference, is created by nativeGetZvmRoot or nativeLoadSettings and
// released once by nativeReleasePtr. 0 means no handle; every function but nativeReleasePtr takes a
// valid one.
//
// Threads: handles may be used from any thread. Releasing one while another thread is inside a call
// on it is the Java side's error.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>

#include "service/settings_fwd.h"

namespace nativesettings {

// Shares the node of a (borrowed) handle with the caller, who keeps it alive for the time of its
// call.
boost::shared_ptr<zlutil::settings::Settings> getRootFromJava(jlong handle);

// The identity of a (borrowed) handle's node: equal for two handles exactly when their nodes are
// the same. No frame: nothing here can fail.
jlong nativeGetPtrTarget(JNIEnv*, jclass, jlong handle);

// Releases an (owned) handle. No frame: nothing here can fail.
void nativeReleasePtr(JNIEnv*, jclass, jlong handle);

// A new handle, owned by the caller, on the root of an engine session's tree; 0 with a
// RuntimeException pending when there is none. Without a catch clause: a negative session leaves as
// boost::numeric::negative_overflow, so the Java side refuses it first.
jlong nativeGetZvmRoot(JNIEnv* env, jclass, jlong zvmHandle);

// A new handle, owned by the caller, on the root of a standalone tree read from the file, or of a
// new empty one for a null name; 0 with a Java exception pending when that fails.
jlong nativeLoadSettings(JNIEnv* env, jclass, jstring fileName);

// The factory directory of the (borrowed) handle's tree. Without a catch clause: the service
// promises not to fail.
jstring nativeGetFactoryDir(JNIEnv* env, jclass, jlong handle);

}  // namespace nativesettings
