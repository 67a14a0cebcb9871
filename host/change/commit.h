// Changes of values. Every change takes the same way: checked and validated with no lock held,
// then, under the tree's writer(), checked again against what other writers did meanwhile and
// handed to the level's store, then made visible under the tree's lock(), then published with no
// lock held. May be called from any thread.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Settings::setAny.
void setValue(Node& node, const std::string& key, const boost::any& value,
              const std::string& level);

// Settings::unset.
void unsetValue(Node& node, const std::string& key, const std::string& level);

using ValueRange = boost::iterator_range<SettingsValues::const_iterator>;

// Settings::setMultiple on keys of this tree.
SettingsProblems commitValues(Tree& tree, const ValueRange& values, const std::string& level);

// Settings::validateMultiple on keys of this tree.
SettingsProblems validateValues(Tree& tree, const ValueRange& values);

}  // namespace zlutil::settings::host
