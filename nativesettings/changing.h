// The natives that change nodes and keys. Each takes borrowed handles and paths
// (nativesettings/paths.h) and leaves a Java exception pending on failure, with nothing changed
// unless its comment says so. Threads: any Java thread.
#pragma once

#include <jni.h>

namespace nativesettings {

// Adds a key with its first value, or (`isKey` false) a node; nativeAddKey and nativeAddNode say
// how.
void addNodeHelper(JNIEnv* env, jlong handle, jobjectArray path, jstring name, jobject settingInfo,
                   jstring level, jstring validatorFirst, jstring validatorSecond, bool isKey);

// Sets the key's value at the level, or records the change in the (borrowed) transaction context
// when it is not 0; the level then has no effect, and a key that does not exist is not recorded. A
// SettingInfo whose getValue() throws leaves everything unchanged and raises nothing.
void nativeSet(JNIEnv* env, jclass, jlong context, jlong handle, jobjectArray path, jstring key,
               jobject settingInfo, jstring level);

void nativeUnset(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring key, jstring level);

// Adds a key and sets its first value. When that value is refused, the key stays, without a value,
// and the refusal is pending. The validator is the pair of strings; with one of them null there is
// none.
void nativeAddKey(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                  jobject settingInfo, jstring level, jstring validatorFirst,
                  jstring validatorSecond);

void nativeAddNode(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name,
                   jstring validatorFirst, jstring validatorSecond);

// Deletes the child, a key or a node with all below it.
void nativeDelete(JNIEnv* env, jclass, jlong handle, jobjectArray path, jstring name);

// Copies the tree below the second place into a new child, called `name`, of the first.
void nativeCopySubtree(JNIEnv* env, jclass, jlong firstHandle, jobjectArray firstPath,
                       jlong secondHandle, jobjectArray secondPath, jstring name);

// The host's identifier test. No frame: it touches no tree.
jboolean nativeIsKeyNameValid(JNIEnv* env, jclass, jstring name);

}  // namespace nativesettings
