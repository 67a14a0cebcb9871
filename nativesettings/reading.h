// The natives that read nodes and keys. Each takes a borrowed handle and a path
// (nativesettings/paths.h) and leaves a Java exception pending on failure, with the result that its
// comment names. Threads: any Java thread.
#pragma once

#include <jni.h>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include "service/settings_fwd.h"

namespace nativesettings {

// The direct child of that name, never null. NotAKeyName when a key is wanted and the child is a
// node; NoSuchKey or NoSuchNode, by what is wanted, when there is none. With `wantKey` false any
// child does.
boost::shared_ptr<zlutil::settings::Settings> getChildFromJava(
    JNIEnv* env, const boost::shared_ptr<zlutil::settings::Settings>& parent, jstring name,
    bool wantKey);

// Returns the value of the node's key at the level; a null level means the value in effect. Throws
// what the service's getValue throws.
boost::any getKeyValueFromJava(JNIEnv* env,
                               const boost::shared_ptr<zlutil::settings::Settings>& node,
                               jstring key, jstring level);

// A SettingInfo with the key's value at the level (null: in effect), or with its declared class
// when it has no value there; null on failure.
jobject nativeGet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key, jstring level);

// The name of the first level at which the key is set; null when it is set at none, and on failure.
jstring nativeGetLevel(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key);

// Whether the key is set at the level (null: at any). A missing node or key is false without an
// exception; other failures are RuntimeExceptions.
jboolean nativeIsSet(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key,
                     jstring level);

// Whether the key exists, or the node when `key` is null. Failures are RuntimeExceptions.
jboolean nativeExists(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key);

// Whether the child exists (not found otherwise) and is a node.
jboolean nativeIsChildNode(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name);

// The names of the node's children: all for selector 0, the keys for a positive one, the nodes for
// a negative one; null on failure, which is a RuntimeException.
jobjectArray nativeGetChildren(JNIEnv* env, jclass, jlong handle, jobjectArray path, jint selector);

}  // namespace nativesettings
