#include "host/tree/tree.h"

#include "base/never_destroyed.h"
#include "host/tree/entry.h"
#include "host/tree/memory_store.h"
#include "service/change_counters.h"

namespace zlutil::settings::host {

Tree::Tree(contextmgr::ZcrID context, Stores stores)
    : context_(context), stores_(std::move(stores)) {}

TreePtr Tree::makeStandalone() {
  static base::NeverDestroyed<std::shared_ptr<Store>> store(std::make_shared<MemoryStore>());
  const std::shared_ptr<Store>& memory = store.get();
  return TreePtr(new Tree(contextmgr::AnyZcrID, {memory, memory, memory, memory}));
}

void Tree::lookAtStores() {
  for (const std::shared_ptr<Store>& store : stores_) store->look();
  // Readers that cache values hear of external changes by the counters only.
  ChangeCounters::addAll();
}

}  // namespace zlutil::settings::host
