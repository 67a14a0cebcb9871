#include "host/roots/fill_from_stores.h"

#include <boost/make_shared.hpp>

#include "host/change/external_changes.h"

namespace zlutil::settings::host {

void fillFromStores(const NodePtr& root) {
  Tree& tree = root->tree();
  // Lowest level first: the higher levels must agree with its definitions.
  for (int level = kLevelCount - 1; level >= 0; --level) tree.store(level).readAll(*root, level);
  const boost::weak_ptr<Entry> watched = root;
  tree.connect(watched);
  for (int level = 0; level < kLevelCount; ++level) {
    const bool isWatched = tree.store(level).watch([watched, level] {
      if (const EntryPtr locked = watched.lock()) catchUp(locked->tree(), level);
    });
    if (!isWatched) tree.setMustLook();
  }
}

NodePtr makeTree(contextmgr::ZcrID context, const Tree::Stores& stores) {
  const TreePtr tree(new Tree(context, stores));
  auto root = boost::make_shared<Node>(tree, "settings", true, ValidatorPtr());
  fillFromStores(root);
  return root;
}

}  // namespace zlutil::settings::host
