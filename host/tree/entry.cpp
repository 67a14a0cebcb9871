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
      isKey_(isKey),
      mayHaveListeners_(mayHaveListeners) {
  if (validator) setDefinition(kUser, definitionWith(std::move(validator)));
}

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

DefinitionPtr Entry::definition(int level) const {
  return definitions_ ? (*definitions_)[level] : DefinitionPtr();
}

const ValidatorPtr* Entry::findValidator() const {
  for (int level = definitions_ ? kLevelCount : 0; level-- > 0;) {
    const DefinitionPtr& part = (*definitions_)[level];
    if (part && part->validator) return &part->validator;
  }
  return nullptr;
}

ValidatorPtr Entry::validator() const {
  const ValidatorPtr* const found = findValidator();
  return found ? *found : ValidatorPtr();
}

std::pair<const Lock*, int> Entry::lock() const {
  for (int level = definitions_ ? kLevelCount : 0; level-- > 0;) {
    const DefinitionPtr& part = (*definitions_)[level];
    if (part && part->lock) return {part->lock.get_ptr(), level};
  }
  return {nullptr, kSession};
}

const Entry* Entry::locked() const {
  const Entry* entry = firstLevel() == kSession ? nullptr : this;
  while (entry && entry->lock().second != firstLevel()) entry = entry->parent_;
  return entry;
}

ValidatorPtr Entry::effectiveValidator() const {
  const ValidatorPtr* found = nullptr;
  for (const Entry* entry = this; entry && !found; entry = entry->parent_) {
    found = entry->findValidator();
  }
  return found ? *found : ValidatorPtr();
}

void Entry::setDefinition(int level, DefinitionPtr definition) {
  if (!definitions_) {
    if (!definition) return;
    definitions_ = std::make_unique<Definitions>();
  }
  (*definitions_)[level] = std::move(definition);
}

}  // namespace host
}  // namespace zlutil::settings
