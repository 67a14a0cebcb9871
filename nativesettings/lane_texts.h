// The lane's natives for single values as text, in the form of settings files.
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// The rows to register these natives with NativeLane.
const std::array<JNINativeMethod, 2>& laneTextMethods();

}  // namespace nativesettings
