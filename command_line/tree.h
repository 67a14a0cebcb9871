// The tree of the user's settings, and the entries that arguments name. A path is the names below
// the root, joined with "."; an empty one is the root. Throws ProgramError and the failures of the
// service.
#pragma once

#include <boost/shared_ptr.hpp>
#include <functional>
#include <string>

#include "service/settings.h"

namespace command_line {

using zlutil::settings::Settings;
using SettingsPtr = boost::shared_ptr<Settings>;

// A key by the node that holds it.
struct KeyInNode {
  SettingsPtr node;
  std::string name;

  boost::any value(const std::string& level = "") const { return node->getValue(name, level); }
  // Returns the number of the kind, or kNoValue.
  int kind() const;
};

// Opens the settings of the user, or those of an application that has a name. `userDirectory`
// replaces the user's own, if it is not empty; the superuser then works as the owner of that
// directory, so that the owner can write every file.
SettingsPtr openRoot(const std::string& userDirectory, const std::string& application);

// Returns the entry, or null.
SettingsPtr find(const SettingsPtr& root, const std::string& path);

SettingsPtr requireEntry(const SettingsPtr& root, const std::string& path);
KeyInNode requireKey(const SettingsPtr& root, const std::string& path);

// Calls `add(node)` with the node that is to hold the key at the path. Adds that node before, and
// those above it that do not exist; removes them again if `add` throws.
void addBelowNewNodes(const SettingsPtr& root, const std::string& path,
                      const std::function<void(const SettingsPtr& node)>& add);

// Returns the last name of a path.
std::string nameOf(const std::string& path);

// Returns the name of the level of the effective value; empty if there is none.
std::string effectiveLevel(const KeyInNode& key);

// Calls `use(entry, depth)` for each entry below the node, in name order, parents first.
template <class Use>
void forEachBelow(const SettingsPtr& node, const Use& use, int depth = 0) {
  for (const SettingsPtr& child : node->getChildren()) {
    use(child, depth);
    if (!child->isKey()) forEachBelow(child, use, depth + 1);
  }
}

}  // namespace command_line
