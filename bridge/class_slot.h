// A cache slot for a class without a record, filled by jzi::safeFindClass (bridge/java_layer.h).
// The slot owns its reference.
#pragma once

#include <jni.h>

#include <atomic>

namespace jzi {

// Releases the class of the slot, by either kind of global reference, and empties the slot. Without
// an environment it leaks the reference. Any thread, but no other may use the slot at the same
// time.
inline void releaseClass(JNIEnv* env, std::atomic<jclass>& slot) {
  jclass held = slot.exchange(nullptr);
  if (!held || !env) return;
  // A weak reference to a class that has been collected has no type any more.
  if (env->IsSameObject(held, nullptr) || env->GetObjectRefType(held) == JNIWeakGlobalRefType) {
    env->DeleteWeakGlobalRef(held);
  } else {
    env->DeleteGlobalRef(held);
  }
}

}  // namespace jzi
