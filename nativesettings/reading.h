// The natives that read nodes and keys. Each takes a borrowed handle and a path
// (nativesettings/paths.h) and leaves a Java exception pending on failure, with the result that its
// comment names. Threads: any Java thread.
#pragma once

#include <jni.h>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include "service/settings_fwd.h"

namespace nativesettings {

// Returns the direct child of that name, never null. With `wantKey` the child must be a key: throws
// NotAKeyName for a node, NoSuchKey if there is no child. Otherwise any child will do: throws
// NoSuchNode if there is none.
boost::shared_ptr<zlutil::settings::Settings> getChildFromJava(
    JNIEnv* env, const boost::shared_ptr<zlutil::settings::Settings>& parent, jstring name,
    bool wantKey);

// Returns the value of the node's key at the level; a null level means the effective value. Throws
// the failures of the service's getValue.
boost::any getKeyValueFromJava(JNIEnv* env,
                               const boost::shared_ptr<zlutil::settings::Settings>& node,
                               jstring key, jstring level);

// Returns a SettingInfo with the key's value at the level (null: the effective value), or with its
// declared class if it has no value there; null on failure.
jobject nativeGet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key, jstring level);

// Returns the name of the first level at which the key is set; null if it is set at none, and on
// failure.
jstring nativeGetLevel(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key);

// Returns whether the key is set at the level (null: at any). False without an exception for a
// missing node or key; other failures are RuntimeExceptions.
jboolean nativeIsSet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key,
                     jstring level);

// Returns whether the key, or for a null `key` the node, exists. Failures are RuntimeExceptions.
jboolean nativeExists(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key);

// Returns whether the child is a node. Raises not found if there is no such child.
jboolean nativeIsChildNode(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name);

// Returns the names of the node's children: all for selector 0, the keys for a positive one, the
// nodes for a negative one; null on failure, which is a RuntimeException.
jobjectArray nativeGetChildren(JNIEnv* env, jclass, jlong handle, jobjectArray path, jint selector);

}  // namespace nativesettings
