// A tree whose workgroup level is shared.
#pragma once

#include "host/change/external_changes.h"
#include "host/shared_store/shared_store.h"
#include "service/new_key.h"
#include "tests/support/user_tree.h"

namespace test {

inline zlutil::settings::host::SharedStoreOptions optionsFor(const std::string& address) {
  zlutil::settings::host::SharedStoreOptions options;
  options.address = address;
  options.longestStart = std::chrono::seconds(20);  // this machine may be slow
  options.fill = [](auto& root, int level, const auto& changes) {
    zlutil::settings::host::applyExternalChanges(root, level, changes);
  };
  return options;
}

// Returns the root of a tree with the store behind the workgroup level; the other levels are in
// memory.
inline zlutil::settings::host::NodePtr openShared(
    const zlutil::settings::host::SharedStoreOptions& options) {
  using namespace zlutil::settings::host;
  const auto memory = std::make_shared<MemoryStore>();
  const Tree::Stores stores = {memory, memory, std::make_shared<SharedStore>(options), memory};
  const TreePtr tree(new Tree(zlutil::contextmgr::BlessedZcrID, stores));
  const auto root = boost::make_shared<Node>(tree, "settings", true, ValidatorPtr());
  fillFromStores(root);
  return root;
}

// Waits until `holds`, at most half a minute.
template <class Condition>
bool eventually(const Condition& holds) {
  for (int wait = 0; wait < 6000 && !holds(); ++wait) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return holds();
}

// Sets an int at the workgroup level as soon as the cluster takes changes.
inline bool canSet(const SettingsPtr& node, const std::string& key, int value) {
  return eventually([&] {
    try {
      node->setAny(key, value, "workgroup");
      return true;
    } catch (const Failure<KORVEN::settings::core::StoreFailure>&) {
      return false;
    }
  });
}

}  // namespace test
