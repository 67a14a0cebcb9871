// The lane: natives of the Java class NativeLane, beside the 31 of the contract and not in their
// way. They take plain arguments and no path, and do only what is in order; for everything else
// they answer that nothing was done, and Java calls the contract's native, which raises what it
// raises. A Java half without that class works without them.
#pragma once

#include <jni.h>

namespace nativesettings {

// Registers the natives if Java has the class; `env` may be null, then nothing happens. Leaves no
// exception pending.
void registerLane(JNIEnv* env);

}  // namespace nativesettings
