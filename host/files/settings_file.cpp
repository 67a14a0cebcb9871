#include "service/settings_file.h"

#include "host/files/settings_reader.h"
#include "host/files/settings_writer.h"
#include "host/os/file_name.h"
#include "host/os/replace_file.h"
#include "service/failures.h"
#include "service/z_settings.h"

namespace zlutil::settings {
namespace {

using namespace KORVEN::settings::core;

host::NodePtr requireNode(const boost::shared_ptr<Settings>& top) {
  if (!top) throw Failure<NoSuchNode>(std::string(), std::string());
  if (top->isKey()) throw Failure<NotANodeName>(std::string(), top->getName());
  return boost::dynamic_pointer_cast<host::Node>(top);
}

// Assigns the values of a file to the keys below `top`, and lists those that have no key.
class Matching {
 public:
  // The caller must hold the lock of the tree of `top`.
  Matching(const host::Node& file, const host::Node& top) { match(file, &top); }

  const SettingsValues& values() const { return values_; }
  const SettingsProblems& problems() const { return problems_; }

 private:
  // `node` is null if the tree has no such node.
  void match(const host::Node& file, const host::Node* node) {
    for (const host::EntryPtr& child : file.childrenByName()) {
      host::Entry* const present = node ? node->child(child->name()) : nullptr;
      if (!child->isKey()) {
        const bool isNode = present && !present->isKey();
        match(static_cast<const host::Node&>(*child),
              isNode ? static_cast<const host::Node*>(present) : nullptr);
        continue;
      }
      const boost::any& value = static_cast<const host::Key&>(*child).effectiveValue();
      if (value.empty()) continue;
      if (present && present->isKey()) {
        values_.emplace_back(present->shared_from_this(), value);
      } else {
        problems_.emplace_back(child->getPath().substr(kRootLength), "The tree has no such key.");
      }
    }
  }

  // The paths of a file begin with the name of its root and a dot.
  static constexpr std::size_t kRootLength = sizeof kStandaloneRootName;

  SettingsValues values_;
  SettingsProblems problems_;
};

}  // namespace

std::string SettingsFile::text(const boost::shared_ptr<Settings>& top,
                               const std::vector<std::string>& levels) {
  const host::NodePtr node = requireNode(top);
  host::LevelSet chosen;
  for (const std::string& level : levels) chosen.set(host::requireLevel(level));
  host::ReadLock lock(node->tree().lock());
  return host::settingsText(*node, chosen);
}

std::vector<std::string> SettingsFile::check(const base::ustring& path) {
  const std::optional<std::string> fileName = host::fileNameFrom(path);
  if (!fileName) throw Failure<FileLoadingError>(path, std::string("no file can have this name"));
  std::vector<std::string> mistakes;
  host::ParseRules rules;
  rules.tree = host::Tree::makeStandalone();
  rules.onMistake = [&](const std::string& message) { mistakes.push_back(message); };
  rules.onDoubt = rules.onMistake;
  try {
    host::readSettingsTree(*fileName, rules);
  } catch (const IUserException& failure) {
    mistakes.push_back(failure.GetMessageTxt());
  }
  return mistakes;
}

void SettingsFile::write(const boost::shared_ptr<Settings>& top,
                         const std::vector<std::string>& levels, const base::ustring& path) {
  const std::optional<std::string> fileName = host::fileNameFrom(path);
  if (!fileName) throw Failure<StoreFailure>(path, std::string("no file can have this name"));
  std::string content;
  try {
    content = text(top, levels);
  } catch (const Failure<ValidationFailure>& failure) {
    throw Failure<StoreFailure>(path, failure.GetMessageTxt());
  }
  host::replaceFile(*fileName, content);
}

SettingsProblems SettingsFile::read(const boost::shared_ptr<Settings>& top,
                                    const std::string& level, const base::ustring& path) {
  const host::NodePtr node = requireNode(top);
  const std::optional<std::string> fileName = host::fileNameFrom(path);
  if (!fileName) throw Failure<FileLoadingError>(path, std::string("no file can have this name"));
  host::ParseRules rules;
  rules.tree = host::Tree::makeStandalone();
  const host::NodePtr file = host::readSettingsTree(*fileName, rules);
  SettingsValues values;
  {
    host::ReadLock lock(node->tree().lock());
    Matching matching(*file, *node);
    if (!matching.problems().empty()) return matching.problems();
    values = matching.values();
  }
  return node->setMultiple(boost::make_iterator_range(values.cbegin(), values.cend()), level, 0);
}

}  // namespace zlutil::settings
