// Base64 (RFC 4648, section 4), the form of keys and values in the JSON of etcd. Pure functions;
// any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zlutil::settings::host {

std::string base64From(std::string_view bytes);

// Returns nothing if the text is not base64 with its padding.
std::optional<std::string> bytesFromBase64(std::string_view text);

}  // namespace zlutil::settings::host
