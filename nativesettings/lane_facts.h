// The lane's natives for facts about an entry beside its values: the level of the effective value,
// the lock, and whether values can be changed. Each answers null if there is no such entry, and
// "nothing" if the service lacks the option that it asks (service/locks.h).
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// The rows to register these natives with NativeLane.
const std::array<JNINativeMethod, 3>& laneFactMethods();

}  // namespace nativesettings
