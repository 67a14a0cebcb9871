#include "host/tree/node.h"

#include <atomic>

#include "host/tree/subtree.h"
#include "service/failures.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

std::atomic<std::uint64_t> removalCount{1};

// Returns the value of the level of that name; "" means the effective value.
const boost::any& valueOf(const Key& key, const std::string& level) {
  return level.empty() ? key.effectiveValue() : key.value(requireLevel(level));
}

}  // namespace

Node::~Node() {
  if (children_.empty()) return;
  // A child that is still held stays readable, as the top of what is below it.
  WriteLock lock(tree().lock());
  for (const EntryPtr& child : childrenByName()) {
    child->setParent(nullptr);
    if (isRemoved()) child->setRemoved();
  }
}

template <class Read>
auto Node::readKey(const std::string& name, const Read& read) const {
  tree().look();
  Entry* found;
  {
    ReadLock lock(tree().lock());
    found = child(name);
    if (found && found->isKey()) return read(static_cast<const Key&>(*found));
  }
  // Thrown without the lock: unwinding through its release would double the time of a failure.
  if (found) throw Failure<NotAKeyName>(this->name(), name);
  throw Failure<NoSuchKey>(this->name(), name);
}

boost::any Node::getValue(const std::string& key, const std::string& level) const {
  return readKey(key, [&level](const Key& found) { return valueOf(found, level); });
}

bool Node::isSet(const std::string& key, const std::string& level) const {
  return readKey(key, [&level](const Key& found) { return !valueOf(found, level).empty(); });
}

boost::optional<int> Node::getKeyType(const std::string& key) const {
  const int kind = readKey(key, [](const Key& found) { return found.kind(); });
  return boost::make_optional(kind != boostany::kNoValue, kind);
}

boost::shared_ptr<Settings> Node::getChild(const std::string& name) const {
  tree().look();
  ReadLock lock(tree().lock());
  Entry* const found = child(name);
  return found ? found->shared_from_this() : EntryPtr();
}

std::vector<boost::shared_ptr<Settings>> Node::getChildren() const {
  tree().look();
  ReadLock lock(tree().lock());
  return {childrenByName().begin(), childrenByName().end()};
}

boost::shared_ptr<Settings> Node::findDescendant(const std::vector<std::string>& names) const {
  tree().look();
  ReadLock lock(tree().lock());
  const Entry* entry = this;
  for (const std::string& name : names) {
    if (entry->isKey()) return {};
    entry = static_cast<const Node*>(entry)->child(name);
    if (!entry) return {};
  }
  return const_cast<Entry*>(entry)->shared_from_this();
}

Entry* Node::child(std::string_view name) const { return children_.find(name); }

Key& Node::requireKey(const std::string& name) const {
  Entry* const found = child(name);
  if (!found) throw Failure<NoSuchKey>(this->name(), name);
  if (!found->isKey()) throw Failure<NotAKeyName>(this->name(), name);
  return static_cast<Key&>(*found);
}

Entry* Node::atPath(std::string_view path) const {
  const Node* node = this;
  while (true) {
    const std::size_t dot = path.find('.');
    Entry* const found = node->child(path.substr(0, dot));
    if (!found || dot == std::string_view::npos) return found;
    if (found->isKey()) return nullptr;
    node = static_cast<const Node*>(found);
    path.remove_prefix(dot + 1);
  }
}

bool Node::insertChild(const EntryPtr& child) {
  if (!children_.insert(child)) return false;
  child->setParent(this);
  if (firstLevel() != kSession) findFirstLevels(*child);
  return true;
}

bool Node::appendChild(const EntryPtr& child) {
  if (!children_.append(child)) return false;
  child->setParent(this);
  if (firstLevel() != kSession) findFirstLevels(*child);
  return true;
}

std::uint64_t Node::removals() { return removalCount.load(std::memory_order_acquire); }

EntryPtr Node::takeChild(std::string_view name) {
  EntryPtr child = children_.take(name);
  removalCount.fetch_add(1, std::memory_order_acq_rel);
  if (child) child->setParent(nullptr);
  return child;
}

std::vector<EntryPtr> Node::takeChildren() {
  std::vector<EntryPtr> taken = children_.takeAll();
  removalCount.fetch_add(1, std::memory_order_acq_rel);
  for (const EntryPtr& child : taken) child->setParent(nullptr);
  return taken;
}

void Node::moveToTree(const TreePtr& tree) {
  Entry::moveToTree(tree);
  for (const EntryPtr& child : childrenByName()) child->moveToTree(tree);
}

}  // namespace zlutil::settings::host
