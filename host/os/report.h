// Telling whoever runs the program what no caller is there to be told. Any thread.
#pragma once

#include <string>

namespace zlutil::settings::host {

// Prints one line on standard error; narrow text.
void report(const std::string& problem);

}  // namespace zlutil::settings::host
