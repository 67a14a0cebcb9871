// get, list, tree, describe and explain.
#include <iostream>
#include <memory>

#include "command_line/commands.h"
#include "command_line/program_error.h"
#include "command_line/terminal.h"
#include "command_line/values.h"
#include "service/explanation.h"

namespace command_line {
namespace {

using zlutil::settings::Explanation;
using zlutil::settings::LevelExplanation;
using zlutil::settings::SettingChoice;
using zlutil::settings::SettingDescription;
using zlutil::settings::SettingLock;

struct ReadOptions {
  std::string path;
  std::string level;
  std::string fallback;
  bool hasFallback = false;
  bool asJson = false;
};

void print(const Json& json) { std::cout << json.dump(2) << '\n'; }

// Returns the members of a key that all commands print.
Json jsonOfKey(const KeyInNode& key, const std::string& path) {
  const std::string level = effectiveLevel(key);
  Json json = {{"path", path}, {"type", typeNameOf(key.kind())}};
  json["level"] = level.empty() ? Json() : Json(level);
  json["value"] = jsonOf(key.value());
  return json;
}

KeyInNode keyOf(const SettingsPtr& entry) { return {entry->getParent(), entry->getName()}; }

void get(const SettingsPtr& root, const ReadOptions& options) {
  const bool mayBeMissing = options.hasFallback;
  const SettingsPtr entry = find(root, options.path);
  if (mayBeMissing && !entry) {
    std::cout << options.fallback << '\n';
    return;
  }
  const KeyInNode key = requireKey(root, options.path);
  const boost::any value = key.value(options.level);
  if (value.empty() && mayBeMissing) {
    std::cout << options.fallback << '\n';
  } else if (value.empty()) {
    throw ProgramError(ExitStatus::kNotFound,
                       "\"" + options.path + "\" has no value" +
                           (options.level.empty() ? "" : " at the level " + options.level) + ".",
                       "\"settings set " + options.path + " VALUE\" sets one.");
  } else if (options.asJson) {
    Json json = jsonOfKey(key, options.path);
    if (!options.level.empty()) json["level"] = options.level;
    json["value"] = jsonOf(value);
    print(json);
  } else {
    for (const std::string& text : textsOf(value)) std::cout << text << '\n';
  }
}

// Lists the names of a node's entries. A name with a dot after it is that of a node.
void list(const SettingsPtr& root, const ReadOptions& options) {
  Json names = Json::array();
  for (const SettingsPtr& child : requireEntry(root, options.path)->getChildren()) {
    names.push_back(child->getName() + (child->isKey() ? "" : "."));
  }
  if (options.asJson) return print(names);
  for (const Json& name : names) std::cout << name.get<std::string>() << '\n';
}

void tree(const SettingsPtr& root, const ReadOptions& options) {
  Json keys = Json::array();
  const SettingsPtr top = requireEntry(root, options.path);
  const auto show = [&](const SettingsPtr& entry, int depth) {
    if (options.asJson) {
      if (entry->isKey()) keys.push_back(jsonOfKey(keyOf(entry), entry->getPath()));
      return;
    }
    std::cout << std::string(2 * depth, ' ') << entry->getName();
    if (entry->isKey()) {
      const KeyInNode key = keyOf(entry);
      const std::string level = effectiveLevel(key);
      std::cout << " (" << typeNameOf(key.kind()) << ')';
      if (!level.empty())
        std::cout << " = " << lineOf(key.value()) << "  "
                  << coloured(Stream::kOutput, Colour::kCyan, '[' + level + ']');
    }
    std::cout << '\n';
  };
  if (top->isKey()) show(top, 0);
  forEachBelow(top, show);
  if (options.asJson) print(keys);
}

std::string validatorText(const Explanation& explanation) {
  if (explanation.validator.empty()) return "none";
  return explanation.validator + ", set at " +
         (explanation.validatorPath.empty() ? "the root" : explanation.validatorPath);
}

Json jsonOfLock(const std::optional<SettingLock>& lock) {
  if (!lock) return {};
  return {{"path", lock->path},
          {"level", lock->level},
          {"reason", lock->reason},
          {"source", lock->source}};
}

std::string lockText(const std::optional<SettingLock>& lock) {
  if (!lock) return "none";
  return "\"" + lock->path + "\" at the level " + lock->level + ", in " + lock->source +
         (lock->reason.empty() ? "" : ": " + lock->reason);
}

Json jsonOfDescription(const SettingDescription& description) {
  Json choices = Json::array();
  for (const SettingChoice& choice : description.choices) {
    choices.push_back({{"value", choice.value}, {"label", choice.label}});
  }
  return {{"title", description.title},
          {"text", description.text},
          {"unit", description.unit},
          {"constraint", description.constraint},
          {"deprecated", description.deprecated},
          {"replacedBy", description.replacedBy},
          {"replaces", description.replaces},
          {"choices", choices}};
}

// Prints the lines of a description that say something.
void print(const SettingDescription& description) {
  const std::pair<const char*, const std::string&> lines[] = {
      {"title", description.title},
      {"description", description.text},
      {"unit", description.unit},
      {"constraint", description.constraint},
      {"deprecated", description.deprecated},
      {"replaced by", description.replacedBy},
      {"replaces", description.replaces}};
  for (const auto& [name, text] : lines) {
    if (!text.empty()) std::cout << "  " << name << ": " << text << '\n';
  }
  for (const SettingChoice& choice : description.choices) {
    std::cout << "  choice: " << choice.value;
    if (!choice.label.empty()) std::cout << " (" << choice.label << ')';
    std::cout << '\n';
  }
}

void describe(const SettingsPtr& root, const ReadOptions& options) {
  const SettingsPtr entry = requireEntry(root, options.path);
  const SettingDescription description = zlutil::settings::describe(entry);
  const std::string type = entry->isKey() ? typeNameOf(keyOf(entry).kind()) : "node";
  if (options.asJson) {
    Json json = {{"path", options.path}, {"type", type}};
    json.update(jsonOfDescription(description));
    return print(json);
  }
  std::cout << options.path << '\n';
  if (!type.empty()) std::cout << "  type: " << type << '\n';
  print(description);
}

Json jsonOfExplanation(const Explanation& explanation) {
  Json levels = Json::array();
  for (const LevelExplanation& level : explanation.levels) {
    Json json = {{"level", level.level}, {"value", jsonOf(level.value)}};
    json["inEffect"] = level.isInEffect;
    json["locked"] = level.isLocked;
    json["source"] = level.source.empty() ? Json() : Json(level.source);
    json["leftOut"] = level.leftOut.empty() ? Json() : Json(level.leftOut);
    json["unreadable"] = level.unreadable;
    json["readOnly"] = level.readOnlyReason.empty() ? Json() : Json(level.readOnlyReason);
    levels.push_back(json);
  }
  Json json = {{"path", explanation.path}, {"type", typeNameOf(explanation.kind)}};
  json["validator"] = explanation.validator.empty() ? Json() : Json(explanation.validator);
  json["lock"] = jsonOfLock(explanation.lock);
  json["description"] = jsonOfDescription(explanation.description);
  json["levels"] = levels;
  return json;
}

void explain(const SettingsPtr& root, const ReadOptions& options) {
  requireKey(root, options.path);
  const Explanation explanation = zlutil::settings::explainKey(find(root, options.path));
  if (options.asJson) return print(jsonOfExplanation(explanation));
  const std::string type = typeNameOf(explanation.kind);
  std::cout << explanation.path << "\n  type: " << (type.empty() ? "not fixed yet" : type) << '\n';
  print(explanation.description);
  std::cout << "  validator: " << validatorText(explanation)
            << "\n  lock: " << lockText(explanation.lock) << '\n';
  std::string inEffect;
  for (const LevelExplanation& level : explanation.levels) {
    std::cout << "  " << level.level << ": ";
    if (level.value.empty()) {
      std::cout << "no value";
    } else {
      std::cout << lineOf(level.value);
      if (!level.source.empty()) std::cout << ", from " << level.source;
      if (level.isInEffect) {
        inEffect = level.level;
        std::cout << " (in effect)";
      } else if (level.isLocked) {
        std::cout << " (no effect: the key is locked)";
      } else {
        std::cout << " (hidden by the level " << inEffect << ')';
      }
    }
    if (!level.leftOut.empty()) std::cout << "; left out: " << level.leftOut;
    if (!level.readOnlyReason.empty()) std::cout << "; read-only: " << level.readOnlyReason;
    std::cout << '\n';
    for (const std::string& part : level.unreadable) std::cout << "    not read: " << part << '\n';
  }
}

// Adds a command that prints data.
CLI::App* add(CLI::App& app, Invocation& invocation, const std::shared_ptr<ReadOptions>& options,
              const std::string& name, const std::string& description,
              void (*command)(const SettingsPtr&, const ReadOptions&)) {
  CLI::App* const added = addCommand(app, invocation, options, name, description, command);
  addJsonOption(*added, options->asJson);
  return added;
}

}  // namespace

void addReadingCommands(CLI::App& app, Invocation& invocation) {
  const auto options = std::make_shared<ReadOptions>();
  CLI::App* const get = add(app, invocation, options, "get",
                            "Print the value in effect, or that of a level", &::command_line::get);
  get->add_option("PATH", options->path, "The key, such as editor.fontSize")->required();
  get->add_option_function<std::string>(
      "--default",
      [options](const std::string& text) {
        options->fallback = text;
        options->hasFallback = true;
      },
      "What to print if there is no value");
  addLevelOptions(*get, options->level);
  add(app, invocation, options, "list", "List the entries of a node; nodes end with a dot", &list)
      ->add_option("PATH", options->path, "The node; the root if it is left out");
  add(app, invocation, options, "tree", "Print all keys below a node with types and values", &tree)
      ->add_option("PATH", options->path, "The node; the root if it is left out");
  add(app, invocation, options, "describe",
      "Print the title, description, type, unit and constraint of an entry",
      &::command_line::describe)
      ->add_option("PATH", options->path, "The key or node")
      ->required();
  add(app, invocation, options, "explain",
      "Print a key's values at all levels, where they come from and which is in effect", &explain)
      ->add_option("PATH", options->path, "The key")
      ->required();
}

}  // namespace command_line
