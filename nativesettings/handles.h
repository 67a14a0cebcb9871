// Settings handles: a Java long that is the address of a heap-allocated shared pointer to a node.
// Each handle owns one strong reference; nativeGetZvmRoot or nativeLoadSettings makes it and
// nativeReleasePtr releases it once. 0 means no handle; every function but nativeReleasePtr takes a
// valid one.
//
// Threads: handles may be used from any thread. Java must not release one while another thread is
// inside a call on it.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>

#include "service/settings_fwd.h"

namespace nativesettings {

// Returns a new handle, owned by the caller, on the node.
jlong newHandle(const boost::shared_ptr<zlutil::settings::Settings>& node);

// Shares the node of a (borrowed) handle with the caller, who keeps it alive during its call.
boost::shared_ptr<zlutil::settings::Settings> getRootFromJava(jlong handle);

// Returns the identity of a (borrowed) handle's node: two handles have the same one exactly if
// their nodes are the same. No frame: nothing here can fail.
jlong nativeGetPtrTarget(JNIEnv*, jclass, jlong handle);

// Releases an (owned) handle. No frame: nothing here can fail.
void nativeReleasePtr(JNIEnv*, jclass, jlong handle);

// Returns a new handle, owned by the caller, on the root of an engine session's tree; 0 with a
// RuntimeException pending if there is none. There is no catch clause: a negative session leaves as
// boost::numeric::negative_overflow, so the Java side must refuse it first.
jlong nativeGetZvmRoot(JNIEnv* env, jclass, jlong zvmHandle);

// Returns a new handle, owned by the caller, on the root of a standalone tree read from the file,
// or of a new empty one for a null name; 0 with a Java exception pending if that fails.
jlong nativeLoadSettings(JNIEnv* env, jclass, jstring fileName);

// Returns the factory directory of the (borrowed) handle's tree. There is no catch clause: the
// service promises not to fail.
jstring nativeGetFactoryDir(JNIEnv* env, jclass, jlong handle);

}  // namespace nativesettings
