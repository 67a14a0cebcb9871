// A bare cache slot for a class, filled by jzi::safeFindClass (bridge/java_layer.h). The slot owns
// its reference.
#pragma once

#include <jni.h>

#include <atomic>

namespace jzi {

// Releases the class of the slot, whichever kind of global reference the host has made, and empties
// it. Without an environment the reference is given up. Any thread, but no other that uses the
// slot.
inline void releaseClass(JNIEnv* env, std::atomic<jclass>& slot) {
  jclass held = slot.exchange(nullptr);
  if (!held || !env) return;
  // A weak reference whose class is gone has no type any more.
  if (env->IsSameObject(held, nullptr) || env->GetObjectRefType(held) == JNIWeakGlobalRefType) {
    env->DeleteWeakGlobalRef(held);
  } else {
    env->DeleteGlobalRef(held);
  }
}

}  // namespace jzi
