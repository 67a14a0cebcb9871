// Reports problems that no caller can receive. Any thread; acquires no lock but its own, so locks
// of the caller do no harm.
#pragma once

#include <string>

#include "service/problems.h"

namespace zlutil::settings::host {

// Reports one line of narrow text, with control characters escaped.
inline void logError(const std::string& problem) { reportProblem(problem); }

}  // namespace zlutil::settings::host
