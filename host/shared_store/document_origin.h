// The names and times that a shared store writes into documents. Any thread.
#pragma once

#include <string>

namespace zlutil::settings::host {

// Returns the name of the process's user; its number if it has none.
std::string userName();
std::string machineName();
// Returns the time now, as "2026-03-01T12:00:00Z".
std::string timeNow();
// Returns a name that no other commit has.
std::string newCommitName();

}  // namespace zlutil::settings::host
