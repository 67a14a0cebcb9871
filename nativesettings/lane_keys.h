// The lane's natives on bound keys (service/bound_key.h). A bound key is a Java long, the address
// of a BoundKey: bind() gives it to Java, which owns it until release(). Levels are positions in
// the service's list of level names, or BoundKey::kEffective; kinds are those of
// values/value_kinds.h. Numbers and truth values travel as 64 bits.
//
// Every function returns "not done" (kNotDone, null, false) in any but the ordinary case. Nothing
// was done then, and the native of the contract raises the reason.
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// "Not done" where a number is returned. If the value is this very number, Java reads it another
// way.
inline constexpr jlong kNotDone = 0x7FF4'5E77'1265'0DEBL;

// The rows to register these natives with NativeLane.
const std::array<JNINativeMethod, 10>& laneKeyMethods();

}  // namespace nativesettings
