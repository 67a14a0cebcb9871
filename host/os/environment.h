// The process environment, and variables that have another value for the service only
// (overrideEnvironment() in service/application.h). Any thread, but not while another thread
// changes the environment.
#pragma once

#include <optional>
#include <string>

namespace zlutil::settings::host {

// Returns the bytes of the variable; "" if it is not set.
std::string environmentText(const char* variable);

// Returns the variable as a number of `units`, such as "milliseconds"; nothing if it is not set.
// Reports one that is no such number on standard error, and returns nothing.
std::optional<int> environmentNumber(const char* variable, const char* units);

}  // namespace zlutil::settings::host
