// Where Java finds the service's change counters (service/change_counts.h), by which it keeps
// values without asking again. Any thread.
#pragma once

#include <jni.h>

namespace nativesettings {

// Gives Java the memory of the counters, once; whoever makes the handle of a tree calls it first.
// Java keeps no values when this fails, so nothing of a failure is left behind.
void shareChangeCounts(JNIEnv* env);

// Has them given anew; part of unloading.
void forgetChangeCounts();

}  // namespace nativesettings
