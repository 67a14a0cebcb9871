// The frame of a call into Java that Java did not ask for, to a listener or a validator: an
// environment for the thread and a local frame. It ends a Java exception that is pending when the
// call ends.
#pragma once

#include <jni.h>

#include "bridge/java_layer.h"

namespace nativesettings {

class JavaCallback {
 public:
  JavaCallback() = default;
  ~JavaCallback() {
    if (env()) env()->ExceptionClear();
  }
  JavaCallback(const JavaCallback&) = delete;
  JavaCallback& operator=(const JavaCallback&) = delete;

  // Returns null if the JVM is not running.
  JNIEnv* env() const { return guard_.env(); }

 private:
  const jzi::JavaGuard guard_;
};

}  // namespace nativesettings
