// The table of native methods: the function of each method of each Java class.
#pragma once

#include <array>

#include "bridge/java_layer.h"

namespace nativesettings {

inline constexpr std::size_t kRegisteredClasses = 5;

// Returns one element per Java class, in the order of registration. The elements borrow static
// arrays.
const std::array<jzi::jziNatives_t, kRegisteredClasses>& registeredClasses();

}  // namespace nativesettings
