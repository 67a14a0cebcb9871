// Level names and their order, and the directories of a test environment. None of these natives has
// a frame: they touch no tree, and no function that they call fails.
#pragma once

#include <jni.h>

namespace nativesettings {

jstring nativeGetUserLevel(JNIEnv* env, jclass);
jstring nativeGetWorkgroupLevel(JNIEnv* env, jclass);
jstring nativeGetFactoryLevel(JNIEnv* env, jclass);
jstring nativeGetSessionLevel(JNIEnv* env, jclass);

// Returns the user level, by design.
jstring nativeGetDefaultLevel(JNIEnv* env, jclass);

// Returns 1 if `first` stands before `second` in the level list, 0 if both are the same known name,
// -1 in every other case.
jint nativeCompareLevels(JNIEnv* env, jclass, jstring first, jstring second);

// Sets the factory and user directories of trees that are yet to be built, through the environment
// of the process. Returns the factory directory as the environment then has it. For single-threaded
// test set-up.
jstring nativeSetEnv(JNIEnv* env, jclass, jstring factoryDir, jstring userDir);

// Removes both directories from the environment.
void nativeUnsetEnv(JNIEnv*, jclass);

}  // namespace nativesettings
