// The host's identifier test, the rule for the names of nodes and keys.
#pragma once

#include "base/export.h"

namespace zlutil {
namespace settings {

// The length of the longest name, in characters.
inline constexpr int kMaxNameLength = 63;

// Returns true for an ASCII letter followed by ASCII letters, digits and underscores, at most
// kMaxNameLength in all. Returns false for null. May be called from any thread.
SETTINGS_HOST_API bool isIdentifierName(const char* name);

}  // namespace settings
}  // namespace zlutil
