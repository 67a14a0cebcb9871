// The lane's natives on bound keys (service/bound_key.h). A bound key is a Java long, the address
// of a BoundKey: bind() gives it to Java, which owns it until release(). Levels are positions in
// the service's list of level names, or BoundKey::kEffective; kinds those of values/value_kinds.h.
// Whole numbers, truth values and floating-point numbers travel as 64 bits.
//
// Every function answers "not done" (kNotDone, null, false) when anything is out of the ordinary:
// then nothing was done, and the native of the contract says why.
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// In place of a number. When it is the number itself, the caller asks again by another way.
inline constexpr jlong kNotDone = 0x7FF4'5E77'1265'0DEBL;

// Rows for the registration of these natives with NativeLane.
const std::array<JNINativeMethod, 10>& laneKeyMethods();

}  // namespace nativesettings
