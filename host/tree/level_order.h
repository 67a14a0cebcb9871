// The levels in priority order, as numbers: 0 to kLevelCount - 1. The first level that has a value
// supplies the effective value. level_order.cpp has their names in the same order. Constants and
// pure functions; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zlutil::settings::host {

enum Level : int { kSession, kUser, kWorkgroup, kFactory };
inline constexpr int kLevelCount = 4;

// The name of a level in [0, kLevelCount).
std::string levelName(int level);

// The level of that name, or nothing.
std::optional<int> findLevel(std::string_view name);

// The level of that name. Throws UnSupportedLevel.
int requireLevel(const std::string& name);

}  // namespace zlutil::settings::host
