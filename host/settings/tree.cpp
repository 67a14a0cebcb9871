#include "host/settings/tree.h"

#include "host/settings/memory_store.h"

namespace zlutil::settings::host {

TreePtr Tree::makeStandalone() {
  static const auto& memory = *new std::shared_ptr<Store>(std::make_shared<MemoryStore>());
  return TreePtr(new Tree(contextmgr::AnyZcrID, {memory, memory, memory, memory}));
}

}  // namespace zlutil::settings::host
