// The position of a value in the settings file that it comes from. Any thread.
#pragma once

#include <string>

#include "host/files/settings_parser.h"

namespace zlutil::settings::host {

// Calls `read(rules)`, which reads a file, and returns "FILE:LINE:COLUMN" of the last value in it
// for the key at the path below the root; empty if there is none, or if the file cannot be read any
// more.
template <class Read>
std::string positionOf(const std::string& path, const std::string& shownFile, const Read& read) {
  const std::string name = path.substr(path.rfind('.') + 1);
  std::string position;
  ParseRules rules;
  rules.tree = Tree::makeStandalone();
  rules.onValue = [&](const Key& key, std::uint64_t line, std::uint64_t column) {
    if (key.name() != name || key.pathBelowTop() != path) return;
    position = shownFile + ':' + std::to_string(line) + ':' + std::to_string(column);
  };
  try {
    read(rules);
  } catch (const std::exception&) {
    // It was right when the tree read it, and has changed since.
  }
  return position;
}

}  // namespace zlutil::settings::host
