// The commands of the program. Each function adds commands with their options to the application;
// a command that was parsed is left in `chosen`, which main() runs.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "command_line/tree.h"

namespace command_line {

struct Invocation {
  std::function<void()> chosen;
  std::string userDirectory;

  SettingsPtr root() const { return openRoot(userDirectory); }
};

void addReadingCommands(CLI::App& app, Invocation& invocation);   // get, list, tree, explain
void addChangingCommands(CLI::App& app, Invocation& invocation);  // set, unset, load
void addFileCommands(CLI::App& app, Invocation& invocation);      // dump, check, export-schema
void addWatchCommand(CLI::App& app, Invocation& invocation);      // watch

// The level that a command reads or changes: --user, --workgroup, --factory. Empty if none is
// given.
void addLevelOptions(CLI::App& command, std::string& level);

}  // namespace command_line
