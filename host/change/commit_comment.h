// The comment of the commits that this thread makes (service/history.h). Any thread.
#pragma once

#include <string>

namespace zlutil::settings::host {

// Returns the comment of the innermost CommitComment of this thread, narrow text; empty if there is
// none.
std::string commitComment();

}  // namespace zlutil::settings::host
