#include "host/tree/tree.h"

#include "host/change/external_events.h"
#include "host/tree/entry.h"
#include "host/tree/memory_store.h"
#include "service/change_counts.h"

namespace zlutil::settings::host {

Tree::Tree(contextmgr::ZcrID context, Stores stores)
    : context_(context), stores_(std::move(stores)) {}

Tree::~Tree() {
  if (foreignEvents_) foreignEvents_->stop();
}

TreePtr Tree::makeStandalone() {
  static const auto& memory = *new std::shared_ptr<Store>(std::make_shared<MemoryStore>());
  return TreePtr(new Tree(contextmgr::AnyZcrID, {memory, memory, memory, memory}));
}

void Tree::connect(const boost::weak_ptr<Entry>& root) {
  root_ = root;
  foreignEvents_ = std::make_shared<ForeignEvents>();
}

void Tree::lookAtStores() {
  for (const std::shared_ptr<Store>& store : stores_) store->look();
  // Whoever keeps what it reads hears of changes by nobody else: nothing that is read now may be
  // kept.
  ChangeCounts::addAll();
}

}  // namespace zlutil::settings::host
