// The VM of the Java layer, and whether it is shutting down. Any thread.
#pragma once

#include <jni.h>

namespace javalayer {

// The JNI version for which the natives are written.
inline constexpr jint kJniVersion = JNI_VERSION_1_4;

// Returns the adopted VM, or null if there is none.
JavaVM* currentVm() noexcept;

// Returns whether the calling thread may call Java: there is a VM, and it has not been stopped.
// Once it has begun to shut down, only threads of Java's own may, and those that the program has
// attached; the VM still runs shutdown hooks then.
bool isRunning() noexcept;

// Returns the environment of the calling thread, or null if it is not attached or there is no VM.
JNIEnv* currentEnv() noexcept;

// Returns the environment of the calling thread. Attaches the thread as a daemon if need be, and
// detaches it when it ends. Returns null if the VM refuses.
JNIEnv* attachedEnv() noexcept;

// Makes all guards answer that the JVM is not running.
void markStopped() noexcept;

}  // namespace javalayer
