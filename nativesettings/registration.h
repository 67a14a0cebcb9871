// The table of native methods: which function serves which method of which Java class.
#pragma once

#include <array>

#include "bridge/java_layer.h"

namespace nativesettings {

inline constexpr std::size_t kRegisteredClasses = 5;

// One record per Java class, in the order of registration. The records borrow static arrays.
const std::array<jzi::jziNatives_t, kRegisteredClasses>& registeredClasses();

}  // namespace nativesettings
