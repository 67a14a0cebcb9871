#include "host/tree/entry.h"

#include <atomic>

#include "host/tree/node.h"

namespace zlutil::settings {

Settings::~Settings() = default;

namespace host {
namespace {

exchange::IDType nextId() {
  static std::atomic<std::uint64_t> last{0};
  return exchange::IDType(last.fetch_add(1, std::memory_order_relaxed) + 1);
}

}  // namespace

Entry::Entry(TreePtr tree, std::string name, bool isKey, bool mayHaveListeners,
             ValidatorPtr validator)
    : tree_(std::move(tree)),
      id_(nextId()),
      name_(std::move(name)),
      validator_(std::move(validator)),
      isKey_(isKey),
      mayHaveListeners_(mayHaveListeners) {}

std::string Entry::getPath() const {
  ReadLock lock(tree_->lock());
  return path();
}

boost::shared_ptr<Settings> Entry::getParent() const {
  ReadLock lock(tree_->lock());
  // The parent may be in its destructor, waiting for the lock.
  return parent_ ? parent_->weak_from_this().lock() : EntryPtr();
}

bool Entry::isRoot() const {
  ReadLock lock(tree_->lock());
  return !isKey_ && !parent_ && !isRemoved();
}

bool Entry::isAttached() const {
  const Entry* entry = this;
  while (entry->parent_) entry = entry->parent_;
  return !entry->isRemoved();
}

std::string Entry::pathBelowTop() const {
  const Entry* chain[kMaxDepth];
  int length = 0;
  std::size_t size = 0;
  for (const Entry* entry = this; entry->parent_; entry = entry->parent_) {
    chain[length++] = entry;
    size += entry->name_.size() + 1;
  }
  std::string path;
  path.reserve(size);
  while (length > 0) {
    path += chain[--length]->name_;
    if (length > 0) path += '.';
  }
  return path;
}

std::string Entry::path() const {
  const Entry* top = this;
  while (top->parent_) top = top->parent_;
  // Paths in a standalone tree begin with the name of its top, so that they do not resolve in
  // another tree; those in a removed subtree with "(removed)", so that they resolve nowhere.
  if (!tree_->isStandalone() && !top->isRemoved()) return pathBelowTop();
  const std::string name = top->isRemoved() ? "(removed)." + top->name_ : top->name_;
  return top == this ? name : name + '.' + pathBelowTop();
}

int Entry::depth() const {
  int depth = 0;
  for (const Entry* entry = parent_; entry; entry = entry->parent_) ++depth;
  return depth;
}

ValidatorPtr Entry::effectiveValidator() const {
  const Entry* entry = this;
  while (!entry->validator_ && entry->parent_) entry = entry->parent_;
  return entry->validator_;
}

}  // namespace host
}  // namespace zlutil::settings
