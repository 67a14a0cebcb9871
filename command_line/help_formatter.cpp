#include "command_line/help_formatter.h"

namespace command_line {

std::string HelpFormatter::make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const {
  if (mode != CLI::AppFormatMode::All) return Formatter::make_subcommands(app, mode);
  std::string text;
  for (const CLI::App* command : app->get_subcommands([](const CLI::App*) { return true; })) {
    const bool isShown = !command->get_name().empty() && !command->get_group().empty();
    if (isShown) text += sectionOf(*command);
  }
  return text;
}

std::string HelpFormatter::sectionOf(const CLI::App& command) const {
  std::string section = "\n" + command.get_parent()->get_name() + ' ' + command.get_name();
  for (const CLI::Option* argument : command.get_options()) {
    if (!argument->get_positional()) continue;
    const std::string name = argument->get_name(true);
    section += argument->get_required() ? ' ' + name : " [" + name + ']';
  }
  return section + ":\n  " + command.get_description() + "\n\n" + rowsOf(command);
}

// Returns the rows of the arguments and options, also of those in groups.
std::string HelpFormatter::rowsOf(const CLI::App& command) const {
  std::string rows;
  for (const CLI::Option* option : command.get_options()) {
    if (option != command.get_help_ptr()) rows += make_option(option, option->get_positional());
  }
  for (const CLI::App* group : command.get_subcommands([](const CLI::App*) { return true; })) {
    rows += rowsOf(*group);
  }
  return rows;
}

}  // namespace command_line
