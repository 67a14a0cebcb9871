// Translation of failures into pending Java exceptions. Threads: any, with that thread's
// environment.
#pragma once

#include <jni.h>

#include <string>

#include "bridge/cons_info.h"

namespace nativesettings {

// Raises a Java exception of the record's class with that message (narrow text), in place of one
// that is pending. When the class cannot be found, the JVM's own exception for that is left
// pending.
void throwJavaExceptionHelper(JNIEnv* env, jzi::ConsInfo& cls, const char* message);

// The same with the message: prefix for "name": detail.
void throwJavaExceptionMessageHelper(JNIEnv* env, const char* prefix, const char* name,
                                     std::string detail, jzi::ConsInfo& cls);

// Raises the settings-not-found exception with the dotted path of the two (each may be null).
void throwNotFound(JNIEnv* env, jobjectArray path, jstring key);

// Translates the C++ exception that is being handled; to be called inside a catch clause only.
// `path` and `key` are the arguments of the failed call and may be null; `asRuntime` makes every
// settings failure a RuntimeException. An exception of a type outside the table is swallowed, on
// purpose.
void handleException(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime);

}  // namespace nativesettings
