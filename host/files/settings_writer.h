// Writes the text of a settings file (docs/settings-file.md). Any thread.
#pragma once

#include <bitset>
#include <string>

#include "host/tree/node.h"

namespace zlutil::settings::host {

using LevelSet = std::bitset<kLevelCount>;

// Returns the text of a file with everything below `top` and the values of the levels. Throws
// ValidationFailure if XML cannot hold a text. The caller must hold the tree's lock.
std::string settingsText(const Node& top, const LevelSet& levels);

}  // namespace zlutil::settings::host
