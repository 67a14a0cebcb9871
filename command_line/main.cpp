// The program `settings`: reads and changes the settings of a user without a JVM.
#include <iostream>

#include "base/text.h"
#include "command_line/commands.h"
#include "command_line/help_formatter.h"
#include "command_line/program_error.h"
#include "command_line/terminal.h"
#include "service/history.h"

namespace command_line {

void addLevelOptions(CLI::App& command, std::string& level) {
  CLI::Option_group* const group = command.add_option_group("level");
  for (const char* const name : {"user", "workgroup", "factory"}) {
    group->add_flag_callback(
        std::string("--") + name, [&level, name] { level = name; },
        std::string("The level ") + name);
  }
  group->add_flag_callback(
      "--session",
      [] {
        throw CLI::ValidationError(
            "--session", "the values of this level exist in the memory of a program only");
      },
      "Not possible: this level is in the memory of a program");
  group->require_option(0, 1);
}

void addJsonOption(CLI::App& command, bool& asJson) {
  command.add_flag("--json", asJson, "Print JSON");
}

void addCommentOption(CLI::App& command, Invocation& invocation) {
  command.add_option("--comment", invocation.comment, "A comment for the history");
}

namespace {

int run(int argc, char** argv) {
  CLI::App app("Reads and changes settings, and checks settings files.", "settings");
  Invocation invocation;
  app.set_version_flag("--version", std::string("settings ") + SETTINGS_VERSION);
  app.formatter(std::make_shared<HelpFormatter>());
  app.add_option(
      "--user-directory", invocation.userDirectory,
      "The directory of the user's settings, for the superuser in place of another user");
  app.add_option("--application", invocation.application,
                 "The name of an application that has settings of its own");
  app.require_subcommand(1);
  app.failure_message(CLI::FailureMessage::simple);
  app.footer(
      "Exit status: 0 done, 1 no such entry or no value, 2 wrong usage, 3 the change is refused, "
      "4 a file or the store failed.");
  addReadingCommands(app, invocation);
  addChangingCommands(app, invocation);
  addFileCommands(app, invocation);
  addHistoryCommands(app, invocation);
  addWatchCommand(app, invocation);
  addCompletionCommand(app, invocation);
  // The commands that are added later would have it too.
  app.set_help_all_flag("--help-all", "Print the help of all commands and exit");
  try {
    app.parse(argc, argv);
  } catch (const CLI::RequiredError& error) {
    const std::vector<std::string> unknown = app.remaining();
    throw ProgramError(
        ExitStatus::kWrongUsage,
        unknown.empty() ? error.what() : "There is no command \"" + unknown.front() + "\".",
        "\"settings --help\" shows the commands and their options.");
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error, std::cout, std::cerr);
    return status == 0 ? 0 : static_cast<int>(ExitStatus::kWrongUsage);
  }
  {
    const zlutil::settings::CommitComment comment(invocation.comment);
    invocation.chosen();
  }
  std::cout.flush();
  if (std::cout) return static_cast<int>(ExitStatus::kDone);
  throw ProgramError(ExitStatus::kFailed, "The output cannot be written.", "Is the disk full?");
}

int fail(const ProgramError& error) {
  std::cout.flush();
  std::cerr << coloured(Stream::kError, Colour::kRed, "settings:") << ' '
            << base::withControlsEscaped(error.what()) << "\n  " << error.nextStep() << '\n';
  return static_cast<int>(error.status());
}

}  // namespace
}  // namespace command_line

int main(int argc, char** argv) {
  using namespace command_line;
  try {
    return run(argc, argv);
  } catch (const ProgramError& error) {
    return fail(error);
  } catch (const std::exception& failure) {
    return fail(fromService(failure));
  }
}
