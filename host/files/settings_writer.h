// The text of a settings file (docs/settings-file.md). Any thread.
#pragma once

#include <bitset>
#include <string>

#include "host/tree/node.h"

namespace zlutil::settings::host {

using LevelSet = std::bitset<kLevelCount>;

// What a file says about everything below `top`, with the values of the levels. Throws
// ValidationFailure for a text that XML cannot hold. Reads what the tree guards.
std::string settingsText(const Node& top, const LevelSet& levels);

}  // namespace zlutil::settings::host
