// Reports problems that no caller can receive, one line each, on standard error. Any thread.
#pragma once

#include <string>

namespace zlutil::settings::host {

// Writes one line of narrow text to standard error, with control characters escaped.
void logError(const std::string& problem);

}  // namespace zlutil::settings::host
