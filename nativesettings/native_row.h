// One row of a table of native methods.
#pragma once

#include <jni.h>

namespace nativesettings {

template <class Function>
JNINativeMethod nativeRow(const char* name, const char* signature, Function* function) {
  // JNI's struct predates const; JNI does not write to the texts.
  return {const_cast<char*>(name), const_cast<char*>(signature), reinterpret_cast<void*>(function)};
}

}  // namespace nativesettings
