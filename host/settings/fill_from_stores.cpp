#include "host/settings/fill_from_stores.h"

#include "host/settings/foreign_changes.h"

namespace zlutil::settings::host {

void fillFromStores(const NodePtr& root) {
  Tree& tree = root->tree();
  // Lowest level first: what it defines, the higher ones have to agree with.
  for (int level = kLevelCount - 1; level >= 0; --level) tree.store(level).readAll(*root, level);
  const boost::weak_ptr<Entry> watched = root;
  for (int level = 0; level < kLevelCount; ++level) {
    tree.store(level).watch([watched, level](const Store::Source& source) {
      if (const auto present = boost::static_pointer_cast<Node>(watched.lock())) {
        applyForeignChanges(*present, level, source);
      }
    });
  }
}

}  // namespace zlutil::settings::host
