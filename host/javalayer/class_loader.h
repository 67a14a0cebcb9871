// Lookup of Java classes by name, through the class loader that the registered classes came from:
// FindClass on a native thread sees the system loader only, which may not know them, or may know
// other classes of the same name.
#pragma once

#include <jni.h>

#include <string>

namespace javalayer {

// Remembers the loader of `cls` (weakly) unless one is known already.
void rememberLoader(JNIEnv* env, jclass cls);

// Forgets the loader.
void forgetLoader(JNIEnv* env);

// A new local reference to the class of that JNI name ("java/lang/String", "[Ljava/lang/String;").
// When there is none, leaves the JVM's exception pending and throws std::runtime_error.
jclass findClass(JNIEnv* env, const std::string& className);

}  // namespace javalayer
