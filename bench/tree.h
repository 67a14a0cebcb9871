// Trees in memory for the benchmarks, and a listener on a tree that never changes.
#pragma once

#include <string>

#include "bench/names.h"
#include "service/events.h"
#include "service/settings.h"
#include "service/z_settings.h"

namespace bench {

using SettingsPtr = boost::shared_ptr<zlutil::settings::Settings>;

// Adds an entry without a validator below the parent.
inline SettingsPtr add(const SettingsPtr& parent, const std::string& name, bool isKey) {
  const SettingsPtr entry = zlutil::settings::ZSettings::createSettingsNode(name, isKey, true, {});
  entry->attachTo(parent);
  return entry;
}

inline SettingsPtr makeRoot() {
  return zlutil::settings::ZSettings::createSettingsNode("r", false, true, {});
}

// A tree with keys five deep, below the node n.n.n.n; `keys` has each key with the value 0.
struct DeepTree {
  explicit DeepTree(int count) : root(makeRoot()), node(root) {
    for (int depth = 1; depth < 5; ++depth) node = add(node, "n", false);
    for (int key = 0; key < count; ++key) keys.emplace_back(add(node, keyName(key), true), 0);
  }

  SettingsPtr root, node;
  zlutil::settings::SettingsValues keys;
};

// A listener of a tree in which nothing changes.
class ListenerElsewhere {
  using Event = zlutil::settings::SettingsValueChangeEvent;

  const SettingsPtr root_ = makeRoot();
  const zlutil::eventmgr::ScopedConnection connection_{
      root_->addListener<Event>([](const Event&) {})};
};

}  // namespace bench
