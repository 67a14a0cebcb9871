// Problems that no call of the service reports: a settings file or a stored value that is left out,
// trouble of a store. An option of the service beside the contract: a host may leave it out. Any
// thread.
//
// A problem is one line of narrow text; it begins with the file, its line and column, if it is
// about a settings file. It is written to standard error, unless somebody has taken the problems
// over.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "base/export.h"

namespace zlutil {
namespace settings {

// Reports a problem of the service, or of a library that belongs to it. Escapes control characters.
SETTINGS_HOST_OPTION void reportProblem(const std::string& problem);

// Returns the problems that the process has noticed so far, oldest first: the last 256.
SETTINGS_HOST_OPTION std::vector<std::string> noticedProblems();

// Takes over the problems of the future: they wait for fetchProblems() and are not written to
// standard error, except those that still wait when the process exits or when more than 256 do.
// Each caller gives them back once. Returns the number of problems noticed so far, which lives as
// long as the process and grows after a problem can be fetched.
SETTINGS_HOST_OPTION const std::atomic<std::uint64_t>& takeProblemsOver();
SETTINGS_HOST_OPTION void giveProblemsBack();

// Returns the problems that wait, oldest first. Each is returned once, to one caller.
SETTINGS_HOST_OPTION std::vector<std::string> fetchProblems();

}  // namespace settings
}  // namespace zlutil
