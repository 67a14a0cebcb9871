// The lane's natives for problems that no call reports (service/problems.h).
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// The rows to register these natives with NativeLane.
const std::array<JNINativeMethod, 3>& laneProblemMethods();

// Gives the problems back if Java has taken them over. Called when the library is unloaded.
void giveBackProblemsOfJava();

}  // namespace nativesettings
