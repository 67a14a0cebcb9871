#include "command_line/tree.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "command_line/program_error.h"
#include "service/application.h"
#include "service/context.h"
#include "service/identifier.h"
#include "service/locks.h"
#include "service/z_settings.h"
#include "values/value_kinds.h"

namespace command_line {
namespace {

using zlutil::settings::ZSettings;

std::vector<std::string> namesOf(const std::string& path) {
  std::vector<std::string> names;
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    names.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return names;
}

ProgramError missing(const std::string& path, const std::string& what) {
  return ProgramError(ExitStatus::kNotFound, "There is no " + what + " \"" + path + "\".",
                      "\"settings tree\" shows all entries.");
}

[[noreturn]] void failToOpen(const std::string& directory) {
  throw ProgramError(ExitStatus::kFailed, directory + ": " + std::strerror(errno),
                     "Name a directory that exists.");
}

// Files that the superuser makes in somebody's directory would be closed to that user.
void workAsOwnerOf(const std::string& directory) {
  struct stat status;
  if (stat(directory.c_str(), &status) != 0) failToOpen(directory);
  if (geteuid() != 0 || status.st_uid == 0) return;
  if (setgroups(0, nullptr) != 0 || setgid(status.st_gid) != 0 || setuid(status.st_uid) != 0) {
    failToOpen(directory);
  }
}

}  // namespace

int KeyInNode::kind() const { return node->getKeyType(name).value_or(zlutil::boostany::kNoValue); }

SettingsPtr openRoot(const std::string& userDirectory, const std::string& application) {
  if (!userDirectory.empty()) {
    workAsOwnerOf(userDirectory);
    setenv("SETTINGS_USERDIR", userDirectory.c_str(), 1);
  }
  if (!application.empty()) {
    zlutil::settings::ApplicationSources sources;
    sources.name = application;
    return zlutil::settings::openApplication(sources);
  }
  const SettingsPtr root = Settings::getSettingsRoot(zlutil::contextmgr::BlessedZcrID);
  if (root) return root;
  throw ProgramError(ExitStatus::kFailed, "The settings cannot be opened.",
                     "The line before says why.");
}

SettingsPtr find(const SettingsPtr& root, const std::string& path) {
  return root->findDescendant(namesOf(path));
}

SettingsPtr requireEntry(const SettingsPtr& root, const std::string& path) {
  if (const SettingsPtr entry = find(root, path)) return entry;
  throw missing(path, "entry");
}

KeyInNode requireKey(const SettingsPtr& root, const std::string& path) {
  const SettingsPtr key = find(root, path);
  if (!key || !key->isKey()) throw missing(path, "key");
  return {key->getParent(), key->getName()};
}

void addBelowNewNodes(const SettingsPtr& root, const std::string& path,
                      const std::function<void(const SettingsPtr& node)>& add) {
  std::vector<std::string> names = namesOf(path);
  for (const std::string& name : names) {
    if (zlutil::settings::isIdentifierName(name.c_str())) continue;
    throw ProgramError(ExitStatus::kWrongUsage, "\"" + name + "\" cannot be a name.",
                       "A name is a letter, then letters, digits and underscores, at most 63.");
  }
  if (!names.empty()) names.pop_back();
  SettingsPtr node = root, topOfNew;
  try {
    for (const std::string& name : names) {
      SettingsPtr child = node->getChild(name);
      if (!child) {
        child = ZSettings::createSettingsNode(name, false, true, {});
        child->attachTo(node);
        if (!topOfNew) topOfNew = child;
      }
      node = child;
    }
    add(node);
  } catch (const std::exception&) {
    if (topOfNew) topOfNew->getParent()->removeNode(topOfNew->getName());
    throw;
  }
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('.') + 1); }

std::string effectiveLevel(const KeyInNode& key) {
  return zlutil::settings::effectiveLevelOf(key.node->getChild(key.name));
}

}  // namespace command_line
