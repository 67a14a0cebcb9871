// complete: prints the words that can stand at the end of a command line, for the completion of
// shells (command_line/completions). It is not in the help.
#include <iostream>
#include <set>

#include "command_line/commands.h"
#include "values/value_kinds.h"

namespace command_line {
namespace {

using Words = std::vector<std::string>;

template <class Use>
void forEachOption(CLI::App& command, const Use& use) {
  for (const CLI::Option* option : command.get_options()) use(*option);
  // Groups of options are commands without a name.
  for (CLI::App* group : command.get_subcommands([](CLI::App*) { return true; })) {
    if (group->get_name().empty()) forEachOption(*group, use);
  }
}

Words longNamesOf(CLI::App& command) {
  std::set<std::string> names;  // each group has an option for help too
  forEachOption(command, [&](const CLI::Option& option) {
    for (const std::string& name : option.get_lnames()) names.insert("--" + name);
  });
  return {names.begin(), names.end()};
}

// Returns the option of that name if it takes a value, else null.
const CLI::Option* optionWithValue(CLI::App& command, const std::string& word) {
  const CLI::Option* found = nullptr;
  forEachOption(command, [&](const CLI::Option& option) {
    const bool takesValue = option.get_items_expected_max() > 0 && !option.get_positional();
    if (word.rfind("--", 0) == 0 && option.check_lname(word.substr(2)) && takesValue) {
      found = &option;
    }
  });
  return found;
}

// Returns the commands that are in the help.
std::vector<CLI::App*> commandsOf(CLI::App& app) {
  return app.get_subcommands([](CLI::App* command) { return !command->get_group().empty(); });
}

Words commandNames(CLI::App& app) {
  Words names;
  for (const CLI::App* command : commandsOf(app)) names.push_back(command->get_name());
  return names;
}

CLI::App* commandOfName(CLI::App& app, const std::string& name) {
  for (CLI::App* command : commandsOf(app)) {
    if (command->get_name() == name) return command;
  }
  return nullptr;
}

Words typeNames() {
  Words names;
  for (int kind = zlutil::boostany::kFirstKind; kind <= zlutil::boostany::kLastKind; ++kind) {
    names.emplace_back(zlutil::boostany::kindName(kind));
  }
  return names;
}

// Returns the paths of the entries of the node that the word names up to its last dot. Those of
// nodes end with a dot.
Words pathsFrom(const Invocation& invocation, const std::string& word) {
  const std::size_t dot = word.rfind('.');
  const std::string above = dot == std::string::npos ? std::string() : word.substr(0, dot);
  const SettingsPtr node = find(invocation.root(), above);
  Words paths;
  if (!node) return paths;
  for (const SettingsPtr& child : node->getChildren()) {
    paths.push_back((above.empty() ? "" : above + ".") + child->getName() +
                    (child->isKey() ? "" : "."));
  }
  return paths;
}

Words candidates(CLI::App& app, const Invocation& invocation, const Words& words) {
  const std::string& last = words.back();
  CLI::App* command = nullptr;
  const CLI::Option* open = nullptr;  // the option whose value comes next
  int given = 0;                      // arguments of the command that are no options
  for (auto word = words.begin(); word != words.end() - 1; ++word) {
    CLI::App& current = command ? *command : app;
    if (open) {
      open = nullptr;
    } else if (word->rfind('-', 0) == 0) {
      open = optionWithValue(current, *word);
    } else if (command) {
      ++given;
    } else {
      command = commandOfName(app, *word);
      if (!command) return {};
    }
  }
  if (open) return open->check_lname("type") ? typeNames() : Words();
  if (last.rfind('-', 0) == 0) return longNamesOf(command ? *command : app);
  if (!command) return commandNames(app);
  const bool takesPath = given == 0 && command->get_option_no_throw("PATH");
  return takesPath ? pathsFrom(invocation, last) : Words();
}

}  // namespace

void addCompletionCommand(CLI::App& app, Invocation& invocation) {
  CLI::App* const complete = app.add_subcommand("complete", "")->group("");
  complete->set_help_flag();
  complete->prefix_command();
  complete->callback([&app, &invocation, complete] {
    invocation.chosen = [&app, &invocation, words = complete->remaining()] {
      if (words.empty()) return;
      for (const std::string& candidate : candidates(app, invocation, words)) {
        if (candidate.rfind(words.back(), 0) == 0) std::cout << candidate << '\n';
      }
    };
  });
}

}  // namespace command_line
