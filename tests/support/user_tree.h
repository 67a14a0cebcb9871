// A tree with a user store of its own behind the user level, as every process has one.
#pragma once

#include <boost/make_shared.hpp>

#include "host/files/xml_directory_store.h"
#include "host/roots/fill_from_stores.h"
#include "host/tree/memory_store.h"
#include "host/user_store/user_store.h"
#include "tests/support/settings_verbs.h"

namespace test {

// Waits only shortly for locks, so that a test of a lock that is never released ends soon.
inline zlutil::settings::host::UserStoreOptions storeIn(const std::string& directory,
                                                        int lockWait = 2000) {
  zlutil::settings::host::UserStoreOptions options{directory, 1};
  options.lockWait = lockWait;
  return options;
}

// Returns the root of a new tree over `user`, with the files of `factory` behind the factory level.
inline zlutil::settings::host::NodePtr treeOver(
    const std::shared_ptr<zlutil::settings::host::Store>& user, const std::string& factory = "") {
  using namespace zlutil::settings::host;
  const Tree::Stores stores = {std::make_shared<MemoryStore>(), user,
                               std::make_shared<XmlDirectoryStore>(""),
                               std::make_shared<XmlDirectoryStore>(factory)};
  const TreePtr tree(new Tree(zlutil::contextmgr::BlessedZcrID, stores));
  const auto root = boost::make_shared<Node>(tree, "settings", true, ValidatorPtr());
  fillFromStores(root);
  return root;
}

inline zlutil::settings::host::NodePtr openTree(
    const zlutil::settings::host::UserStoreOptions& options, const std::string& factory = "") {
  return treeOver(std::make_shared<zlutil::settings::host::UserStore>(options), factory);
}

// Returns the root of a tree that reads external changes only when it changes something itself.
inline zlutil::settings::host::NodePtr openUnwatched(
    const zlutil::settings::host::UserStoreOptions& options) {
  using namespace zlutil::settings::host;
  const auto memory = std::make_shared<MemoryStore>();
  const auto store = std::make_shared<UserStore>(options);
  const TreePtr tree(
      new Tree(zlutil::contextmgr::BlessedZcrID, Tree::Stores{memory, store, memory, memory}));
  const auto root = boost::make_shared<Node>(tree, "settings", true, ValidatorPtr());
  store->readAll(*root, kUser);
  tree->connect(root);
  return root;
}

// Returns a receiver for a store without a tree.
inline zlutil::settings::host::Store::Receiver hearNothing() {
  return [](const auto&) { return true; };
}

// Returns all content of the user level, one change per line; a tree opened later must have the
// same.
std::string contentsOf(const zlutil::settings::host::NodePtr& root);

}  // namespace test
