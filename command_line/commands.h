// The commands of the program. Each function adds commands with their options to the application;
// a command that was parsed is left in `chosen`, which main() runs.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>

#include "command_line/tree.h"

namespace command_line {

struct Invocation {
  std::function<void()> chosen;
  std::string userDirectory, application;
  std::string comment;  // of the commits

  SettingsPtr root() const { return openRoot(userDirectory, application); }
};

void addReadingCommands(CLI::App& app,
                        Invocation& invocation);  // get, list, tree, describe, explain
void addChangingCommands(CLI::App& app, Invocation& invocation);  // set, unset, load
void addFileCommands(CLI::App& app, Invocation& invocation);      // dump, check, export-schema
void addHistoryCommands(CLI::App& app,
                        Invocation& invocation);  // history, diff, undo, backup, restore
void addCompletionCommand(CLI::App& app, Invocation& invocation);
void addWatchCommand(CLI::App& app, Invocation& invocation);  // watch

// The level that a command reads or changes: --user, --workgroup, --factory. Empty if none is
// given.
void addLevelOptions(CLI::App& command, std::string& level);

void addJsonOption(CLI::App& command, bool& asJson);
void addCommentOption(CLI::App& command, Invocation& invocation);

// Adds a command that works on the tree of the user's settings.
template <class Options>
CLI::App* addCommand(CLI::App& app, Invocation& invocation, const std::shared_ptr<Options>& options,
                     const std::string& name, const std::string& description,
                     void (*command)(const SettingsPtr& root, const Options& options)) {
  CLI::App* const added = app.add_subcommand(name, description);
  added->callback([&invocation, options, command] {
    invocation.chosen = [&invocation, options, command] { command(invocation.root(), *options); };
  });
  return added;
}

}  // namespace command_line
