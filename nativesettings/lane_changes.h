// The lane's native for several changes of a tree as one (service/tree_changes.h).
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// The row to register this native with NativeLane.
const std::array<JNINativeMethod, 1>& laneChangeMethods();

}  // namespace nativesettings
