#include "host/change/structure.h"

#include <boost/make_shared.hpp>

#include "host/change/new_key.h"
#include "host/change/value_checks.h"
#include "host/tree/subtree.h"
#include "service/failures.h"
#include "service/identifier.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

[[noreturn]] void refuse(const Entry& parent, const Entry& entry, const std::string& reason) {
  throw Failure<ErrorAddingChildNodeOrKey>(parent.name(), entry.name(), reason);
}

void checkName(const Entry& parent, const std::string& name, bool isKey) {
  if (isIdentifierName(name.c_str())) return;
  if (isKey) throw Failure<NotAKeyName>(parent.name(), name);
  throw Failure<NotANodeName>(parent.name(), name);
}

// Throws if the entry cannot stand below the parent. The caller holds the lock() of the parent's
// tree, and is the only one who knows the entry.
void checkCanStand(const Node& parent, const Entry& entry, int height) {
  if (!parent.isAttached()) throw Failure<NoSuchNode>(std::string("(removed)"), parent.name());
  if (parent.child(entry.name())) refuse(parent, entry, "the name is taken");
  checkDepth(parent, entry.name(), height);
}

bool canStand(const Node& parent, const Entry& entry, int height) {
  ReadLock lock(parent.tree().lock());
  return parent.isAttached() && !parent.child(entry.name()) && parent.firstLevel() <= kUser &&
         parent.depth() + 1 + height <= kMaxDepth;
}

// Returns the level whose store keeps the new entry: the user level, but that of its value for a
// key whose first value is at another level that is stored.
int homeOf(const Tree& tree, const Entry& entry) {
  if (!entry.isKey()) return kUser;
  for (int level = kUser + 1; level < kLevelCount; ++level) {
    const bool isStored = tree.store(level).keepsChanges() && !tree.isReadOnly(level);
    if (isStored && !static_cast<const Key&>(entry).value(level).empty()) return level;
  }
  return kUser;
}

// Returns whether the entry or one below it has a value at the level.
bool hasValueAt(const Entry& entry, int level) {
  if (entry.isKey()) return !static_cast<const Key&>(entry).value(level).empty();
  for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
    if (hasValueAt(*child, level)) return true;
  }
  return false;
}

// Throws if values in a subtree belong to another store than the subtree itself: two stores cannot
// take them as one change. The caller holds the entry's tree's lock().
void checkHasOneHome(const Tree& tree, const Node& parent, const Entry& entry) {
  if (entry.isKey()) return;
  for (int level = kUser + 1; level < kLevelCount; ++level) {
    if (tree.isReadOnly(level) || !tree.store(level).keepsChanges()) continue;
    if (hasValueAt(entry, level)) {
      throw Failure<ValidationFailure>("Cannot add \"" + entry.name() + "\" to \"" + parent.name() +
                                       "\": it has values at the level \"" + levelName(level) +
                                       "\". Add it without them, and set them afterwards.");
    }
  }
}

std::string pathBelow(const Node& parent, const std::string& name) {
  const std::string path = parent.path();
  return path.empty() ? name : path + '.' + name;
}

// Prepares the insertion, so that it cannot fail after the entry has been stored. Returns true.
bool makeRoom(Node& parent) {
  WriteLock lock(parent.tree().lock());
  parent.makeRoomForChild();
  return true;
}

}  // namespace

void checkNewEntry(const Node& parent, const std::string& name) {
  if (!isIdentifierName(name.c_str())) throw Failure<NotAKeyName>(parent.name(), name);
}

void checkDepth(const Node& parent, const std::string& name, int height) {
  if (parent.depth() + 1 + height <= kMaxDepth) return;
  throw Failure<ValidationFailure>("Cannot add \"" + name + "\" to \"" + parent.name() +
                                   "\": the tree would be deeper than " +
                                   std::to_string(kMaxDepth) + " entries.");
}

bool tryInserting(TreeEdit& edit, Node& parent, const EntryPtr& entry) {
  Tree& tree = parent.tree();
  const int height = heightOf(*entry), home = homeOf(tree, *entry);
  Changes changes;
  {
    ReadLock lock(tree.lock());
    checkCanStand(parent, *entry, height);
    checkWritable(parent, kUser);
    checkHasOneHome(tree, parent, *entry);
    if (home != kUser) describeFor(parent, home, changes);
    if (tree.store(home).keepsChanges()) {
      describe(*entry, pathBelow(parent, entry->name()), home, true, changes);
    }
  }
  makeRoom(parent);
  const auto describeAll = [&]() -> const Changes& { return changes; };
  const auto isPossible = [&] { return canStand(parent, *entry, height) && makeRoom(parent); };
  if (!edit.store(home, describeAll, isPossible)) return false;
  markDefinedAt(*entry, home);
  if (&entry->tree() != &tree) entry->moveToTree(parent.treePtr());
  edit.insert(parent, entry, home);
  return true;
}

NodePtr requireParent(const EntryPtr& entry, const boost::shared_ptr<Settings>& parent) {
  const auto at = boost::dynamic_pointer_cast<Entry>(parent);
  if (!at) {
    throw Failure<ErrorAddingChildNodeOrKey>(std::string(), entry->name(),
                                             std::string("there is no parent"));
  }
  if (at->isKey()) {
    const auto above = at->getParent();
    throw Failure<NotANodeName>(above ? above->getName() : std::string(), at->name());
  }
  checkName(*at, entry->name(), entry->isKey());
  at->tree().look();
  {
    ReadLock lock(entry->tree().lock());
    if (entry->parent()) refuse(*at, *entry, "it stands in a tree already");
    if (entry->isRemoved()) refuse(*at, *entry, "it has been removed from a tree");
    // Only the root of a context's tree has neither a parent nor a standalone tree.
    if (!entry->tree().isStandalone()) refuse(*at, *entry, "it is the root of a tree");
  }
  if (!entry->isKey() && &entry->tree() == &at->tree())
    refuse(*at, *entry, "it is that tree's top");
  const NodePtr node = boost::static_pointer_cast<Node>(at);
  ReadLock lock(node->tree().lock());
  checkCanStand(*node, *entry, 0);
  checkWritable(*node, kUser);
  return node;
}

void Entry::attachTo(const boost::shared_ptr<Settings>& parent) {
  const EntryPtr self = shared_from_this();
  const NodePtr node = requireParent(self, parent);
  if (waitsForValue(self, node)) return;
  editTree(node->tree(), [&](TreeEdit& edit) { return tryInserting(edit, *node, self); });
}

void Node::copySubtree(const boost::shared_ptr<Settings>& source, const std::string& name) {
  const auto from = boost::dynamic_pointer_cast<Entry>(source);
  if (!from) throw Failure<NoSuchNode>(this->name(), name);
  if (from->isKey()) throw Failure<NotANodeName>(this->name(), from->name());
  checkName(*this, name, false);
  tree().look();
  from->tree().look();
  {
    ReadLock lock(tree().lock());
    const Entry* const taken = child(name);
    if (taken && !taken->isKey() && static_cast<const Node*>(taken)->hasChildren()) {
      throw Failure<CannotMergeWithNodeContainsChildren>(this->name(), name);
    }
  }
  // Created before the lock is acquired: if copying fails, the half-made copy must be destroyed
  // without the lock.
  const auto copy =
      boost::make_shared<Node>(treePtr(), name, from->canHaveListeners(), ValidatorPtr());
  {
    ReadLock lock(from->tree().lock());
    copy->setDefinition(kUser, definitionWith(from->validator()));
    copyChildren(static_cast<const Node&>(*from), *copy);
  }
  moveToWritableLevels(*copy, tree());
  editTree(tree(), [&](TreeEdit& edit) { return tryInserting(edit, *this, copy); });
}

void checkRemovable(const Entry& entry) {
  for (int level = 0; level < kLevelCount; ++level) {
    if (level == kUser || !entry.isDefinedAt(level)) continue;
    if (!entry.tree().store(level).keepsChanges()) continue;
    throw Failure<CantModifyValuesOnReadOnlyLevel>(
        entry.path(), levelName(level),
        std::string(entry.tree().isReadOnly(level)
                        ? "a file of this level defines the entry"
                        : "this level defines the entry for others too. Remove it there"));
  }
  checkWritable(entry, kUser);
}

namespace {

// Returns the child to remove, or throws why it cannot be removed. The caller holds the tree's
// lock().
Entry& requireRemovable(Node& parent, const std::string& name, bool isKey) {
  Entry* const found = parent.isAttached() ? parent.child(name) : nullptr;
  if (!found && isKey) throw Failure<NoSuchKey>(parent.name(), name);
  if (!found) throw Failure<NoSuchNode>(parent.name(), name);
  if (isKey && !found->isKey()) throw Failure<NotAKeyName>(parent.name(), name);
  if (!isKey && found->isKey()) throw Failure<NotANodeName>(parent.name(), name);
  checkRemovable(*found);
  return *found;
}

}  // namespace

bool tryRemoving(TreeEdit& edit, Node& parent, const std::string& name, bool isKey,
                 const std::function<bool()>& isWanted) {
  Tree& tree = parent.tree();
  const Entry* found;
  std::string path;
  Audience audience;
  {
    ReadLock lock(tree.lock());
    found = &requireRemovable(parent, name, isKey);
    path = found->path();
    audience = audienceOfRemoval(*found);
  }
  const auto isPossible = [&] {
    ReadLock lock(tree.lock());
    if (!parent.isAttached() || parent.child(name) != found) return false;
    if (found->firstLevel() > kUser) return false;
    audience = audienceOfRemoval(*found);
    return found->isKey() == isKey && isWanted();
  };
  const auto describe = [&]() -> Changes { return {RemoveSubtree{path}}; };
  if (!edit.store(kUser, describe, isPossible)) return false;
  edit.remove(parent, *found, std::move(audience));
  return true;
}

namespace {

void removeChild(Node& parent, const std::string& name, bool isKey) {
  parent.tree().look();
  editTree(parent.tree(), [&](TreeEdit& edit) {
    return tryRemoving(edit, parent, name, isKey, [] { return true; });
  });
}

}  // namespace

void Node::removeKey(const std::string& name) { removeChild(*this, name, true); }
void Node::removeNode(const std::string& name) { removeChild(*this, name, false); }

}  // namespace zlutil::settings::host
