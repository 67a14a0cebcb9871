// Reads a settings file from disk, or its content. Any thread.
#pragma once

#include <cstdint>
#include <string>

#include "host/files/settings_parser.h"

namespace zlutil::settings::host {

// The largest file that is read, in bytes.
inline constexpr std::uint64_t kMaxFileSize = std::uint64_t{256} << 20;

// Returns a new root with the entries of the file, which the caller then owns. `fileName` is bytes
// for the system. Throws FileLoadingError, SaxParseException or SaxUnknownException.
NodePtr readSettingsTree(const std::string& fileName, const ParseRules& rules);

// Does the same with the bytes of a file. `name` is the file's name in messages, narrow text.
NodePtr readSettingsContent(const std::string& content, const std::string& name,
                            const ParseRules& rules);

}  // namespace zlutil::settings::host
