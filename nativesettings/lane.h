// The lane: natives of the Java class NativeLane, beside the 31 of the contract. They take plain
// arguments and no path, and do the ordinary cases only. In any other case they return that nothing
// was done, and Java calls the contract's native, which raises the exception. A Java half without
// that class works without them.
#pragma once

#include <jni.h>

namespace nativesettings {

// Registers the natives if Java has the class. Does nothing for a null `env`. Leaves no exception
// pending.
void registerLane(JNIEnv* env);

}  // namespace nativesettings
