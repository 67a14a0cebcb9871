// File names at the border: narrow text or 16-bit text inside, bytes for the system. Any thread.
#pragma once

#include <optional>
#include <string>

#include "base/text.h"

namespace zlutil::settings::host {

// Returns the name as bytes for the system, or nothing if no file can have it: it is empty, or
// holds U+0000 or a lone surrogate.
std::optional<std::string> fileNameFrom(const base::ustring& path);

// Returns the name as narrow text, for messages and for Java; bytes that are not UTF-8 become
// U+FFFD.
std::string shownFileName(const std::string& fileName);

// Returns the system's text for an error number.
std::string systemText(int error);

}  // namespace zlutil::settings::host
