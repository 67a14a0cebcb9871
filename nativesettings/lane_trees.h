// The lane's natives for trees as a whole: opening that of an application (service/application.h),
// keeping that of the process in memory, synchronizing and saving one.
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// The rows to register these natives with NativeLane.
const std::array<JNINativeMethod, 5>& laneTreeMethods();

}  // namespace nativesettings
