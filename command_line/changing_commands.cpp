// set, unset and load.
#include <iostream>
#include <map>
#include <memory>

#include "base/text.h"
#include "command_line/commands.h"
#include "command_line/program_error.h"
#include "command_line/terminal.h"
#include "command_line/values.h"
#include "service/new_key.h"
#include "service/validators.h"
#include "values/value_kinds.h"

namespace command_line {
namespace {

using zlutil::settings::SettingsProblems;
using zlutil::settings::SettingsValues;

struct ChangeOptions {
  std::string path;
  std::vector<std::string> values;
  std::string type;
  std::string level;
  bool skips = false;

  std::string levelToChange() const { return level.empty() ? "user" : level; }
};

void set(const SettingsPtr& root, const ChangeOptions& options) {
  const SettingsPtr entry = find(root, options.path);
  if (entry && !entry->isKey()) requireKey(root, options.path);
  int kind = zlutil::boostany::kNoValue;
  if (entry) kind = requireKey(root, options.path).kind();
  if (!options.type.empty()) {
    const int asked = kindOfTypeName(options.type);
    if (kind != zlutil::boostany::kNoValue && kind != asked) {
      throw ProgramError(ExitStatus::kRefused,
                         "\"" + options.path + "\" is of the type " + typeNameOf(kind) + ", not " +
                             options.type + ".",
                         "Leave --type out.");
    }
    kind = asked;
  }
  if (kind == zlutil::boostany::kNoValue) {
    throw ProgramError(ExitStatus::kWrongUsage, "\"" + options.path + "\" has no type yet.",
                       "Name one with --type, such as --type int.");
  }
  const boost::any value = valueOf(kind, options.values);
  if (entry) {
    entry->getParent()->setAny(entry->getName(), value, options.levelToChange());
  } else {
    addBelowNewNodes(root, options.path, [&](const SettingsPtr& node) {
      zlutil::settings::NewKey::add(node, nameOf(options.path), {}, value, options.levelToChange());
    });
  }
}

void unset(const SettingsPtr& root, const ChangeOptions& options) {
  const KeyInNode key = requireKey(root, options.path);
  key.node->unset(key.name, options.levelToChange());
}

// The values of a file for the keys of the tree, and the problems with the others.
struct Loaded {
  std::map<std::string, std::pair<SettingsPtr, boost::any>> values;  // by path
  SettingsProblems problems;
};

Loaded valuesOf(const SettingsPtr& file, const SettingsPtr& root) {
  Loaded loaded;
  const std::size_t rootLength = file->getName().size() + 1;
  forEachBelow(file, [&](const SettingsPtr& entry, int) {
    if (!entry->isKey()) return;
    const boost::any value = entry->getParent()->getValue(entry->getName(), "");
    if (value.empty()) return;
    const std::string path = entry->getPath().substr(rootLength);
    const SettingsPtr key = find(root, path);
    if (key && key->isKey()) {
      loaded.values[path] = {key, value};
    } else {
      loaded.problems.emplace_back(path, "There is no such key.");
    }
  });
  return loaded;
}

// Sets the values in one transaction. With --skip, moves those that are refused to the problems.
// Returns false, with nothing set, if there are problems without it.
bool trySetting(Loaded& loaded, const SettingsPtr& root, const ChangeOptions& options) {
  if (!loaded.problems.empty() && !options.skips) return false;
  while (true) {
    SettingsValues values;
    for (const auto& [path, value] : loaded.values) values.push_back(value);
    const auto all = boost::make_iterator_range(values.cbegin(), values.cend());
    const SettingsProblems refused = root->setMultiple(all, options.levelToChange(), 0);
    if (refused.empty()) return true;
    loaded.problems.insert(loaded.problems.end(), refused.begin(), refused.end());
    bool isLeftOut = false;
    for (const auto& problem : refused) isLeftOut |= loaded.values.erase(problem.first) > 0;
    if (!options.skips || !isLeftOut) return false;
  }
}

void load(const SettingsPtr& root, const ChangeOptions& options) {
  Loaded loaded;
  bool isDone = false;
  {
    const Progress progress("Loading " + options.path);
    loaded = valuesOf(Settings::importAsStandaloneObject(base::to_ustring(options.path)), root);
    isDone = trySetting(loaded, root, options);
  }
  printProblems(loaded.problems, std::cerr);
  if (!isDone) {
    throw ProgramError(ExitStatus::kRefused, "Nothing was loaded from " + options.path + ".",
                       "Mend the file, or leave these keys out with --skip.");
  }
  std::cout << loaded.values.size() << " keys set, " << loaded.problems.size() << " left out\n";
}

void addUncheckedOption(CLI::App& command) {
  command.add_flag_callback("--unchecked", zlutil::settings::JValidator::acceptUnchecked,
                            "Accept values that only a validator in Java could check");
}

// Adds a command that changes values at a level.
CLI::App* add(CLI::App& app, Invocation& invocation, const std::shared_ptr<ChangeOptions>& options,
              const std::string& name, const std::string& description,
              void (*command)(const SettingsPtr&, const ChangeOptions&)) {
  CLI::App* const added = addCommand(app, invocation, options, name, description, command);
  addLevelOptions(*added, options->level);
  addCommentOption(*added, invocation);
  return added;
}

}  // namespace

void addChangingCommands(CLI::App& app, Invocation& invocation) {
  const auto options = std::make_shared<ChangeOptions>();
  CLI::App* const set =
      add(app, invocation, options, "set", "Set the value of a key, which is added if need be",
          &::command_line::set);
  set->add_option("PATH", options->path, "The key")->required();
  set->add_option("VALUE", options->values, "The value; for an array its elements");
  addUncheckedOption(*set);
  set->add_option("--type", options->type, "The type of a new key");
  add(app, invocation, options, "unset", "Remove the value of a key", &unset)
      ->add_option("PATH", options->path, "The key")
      ->required();
  CLI::App* const load =
      add(app, invocation, options, "load", "Set the values of a settings file, all or none",
          &::command_line::load);
  load->add_option("FILE", options->path, "The settings file")->required();
  addUncheckedOption(*load);
  load->add_flag("--skip", options->skips, "Leave out what is refused, and set the rest");
}

}  // namespace command_line
