// The VM that the Java layer works with: which one it is, and whether it is going down.
#pragma once

#include <jni.h>

namespace javalayer {

// Every name of a JNI version in this layer: what the natives are written for.
inline constexpr jint kJniVersion = JNI_VERSION_1_4;

// The adopted VM; null while there is none.
JavaVM* currentVm() noexcept;

// Whether there is a VM and it has not begun to go down.
bool isRunning() noexcept;

// The environment of the calling thread; null when it is not attached or there is no VM.
JNIEnv* currentEnv() noexcept;

// The environment of the calling thread, attaching it as a daemon if need be; null when the VM
// refuses. A thread attached here is detached when it ends.
JNIEnv* attachedEnv() noexcept;

// Makes guards answer that the JVM is not running.
void markStopped() noexcept;

}  // namespace javalayer
