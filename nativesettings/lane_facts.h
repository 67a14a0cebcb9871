// The lane's natives for facts about an entry beside its values: the level of the effective value,
// the lock, whether values can be changed, the description, and the explanation of a key. Each
// returns null if there is no such entry, and no texts if the service lacks the option that it asks
// (service/locks.h, description.h, explanation.h).
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// The rows to register these natives with NativeLane.
const std::array<JNINativeMethod, 5>& laneFactMethods();

}  // namespace nativesettings
