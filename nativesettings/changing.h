// The natives that change nodes and keys. Each takes borrowed handles and paths
// (nativesettings/paths.h) and leaves a Java exception pending on failure, with nothing changed
// unless its comment says so. Threads: any Java thread.
#pragma once

#include <jni.h>

namespace nativesettings {

// Adds a key with its first value, or (`isKey` false) a node, as nativeAddKey and nativeAddNode do.
void addNodeHelper(JNIEnv* env, jlong handle, jobjectArray path, jstring name, jobject settingInfo,
                   jstring level, jstring validatorFirst, jstring validatorSecond, bool isKey);

// Sets the key's value at the level or, if the (borrowed) transaction context is not 0, records the
// change in it; the level then has no effect, and a key that does not exist is not recorded. A
// SettingInfo whose getValue() throws leaves everything unchanged and raises nothing.
void nativeSet(JNIEnv* env, jclass, jlong context, jlong handle, jobjectArray path, jstring key,
               jobject settingInfo, jstring level);

void nativeUnset(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key, jstring level);

// Adds a key and sets its first value. If that value is refused, the key stays, without a value,
// and the exception of the refusal is pending. The validator is the pair of strings; if one is
// null, there is none.
void nativeAddKey(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                  jobject settingInfo, jstring level, jstring validatorFirst,
                  jstring validatorSecond);

void nativeAddNode(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                   jstring validatorFirst, jstring validatorSecond);

// Deletes the child, a key or a node with everything below it.
void nativeDelete(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name);

// Copies the tree below the second path into a new child, called `name`, of the node at the first.
void nativeCopySubtree(JNIEnv* env, jclass, jlong firstHandle, jobjectArray firstPath,
                       jlong secondHandle, jobjectArray secondPath, jstring name);

// Returns the result of the host's identifier test. No frame: it touches no tree.
jboolean nativeIsKeyNameValid(JNIEnv* env, jclass, jstring name);

}  // namespace nativesettings
