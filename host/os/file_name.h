// File names at the border: narrow text or 16-bit text inside, bytes for the system. Any thread.
#pragma once

#include <optional>
#include <string>

#include "base/text.h"

namespace zlutil::settings::host {

// The bytes that name the file for the system; nothing when no file can have the name (it is empty,
// or holds U+0000 or a lone surrogate).
std::optional<std::string> fileNameFrom(const base::ustring& path);

// The name as narrow text, for messages and for Java; bytes that are no UTF-8 become U+FFFD.
std::string shownFileName(const std::string& fileName);

// What the system says about an error number.
std::string systemText(int error);

}  // namespace zlutil::settings::host
