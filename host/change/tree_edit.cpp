#include "host/change/tree_edit.h"

#include <new>

#include "host/change/external_events.h"
#include "host/tree/subtree.h"
#include "values/stored_value.h"

namespace zlutil::settings::host {

// The writer is released in another function than it is acquired in.
TreeEdit::TreeEdit(Tree& tree, Priority priority) NO_THREAD_SAFETY_ANALYSIS : tree_(tree) {
  if (priority == kAhead) {
    tree_.writer().lockAhead();
  } else {
    tree_.writer().lock();
  }
}

TreeEdit::~TreeEdit() { unlock(); }

void TreeEdit::unlock() NO_THREAD_SAFETY_ANALYSIS {
  if (!isLocked_) return;
  isLocked_ = false;
  tree_.writer().unlock();
  if (hasExternalEvents_ && tree_.externalEvents()) tree_.externalEvents()->publish();
}

bool TreeEdit::apply(int level, const Changes& changes, const std::function<bool()>& isPossible) {
  return tree_.store(level).apply(changes, [&](const ExternalChanges& external) {
    hasExternalEvents_ = true;
    applyExternalChanges(tree_, level, external);
    return isPossible();
  });
}

void TreeEdit::catchUp(int level) { tree_.store(level).catchUp(receiver(level)); }

void TreeEdit::synchronize(int level) { tree_.store(level).synchronize(receiver(level)); }

Store::Receiver TreeEdit::receiver(int level) {
  return [this, level](const ExternalChanges& external) {
    hasExternalEvents_ = true;
    applyExternalChanges(tree_, level, external);
    return true;
  };
}

void TreeEdit::replaceValue(Key& key, int level, boost::any value) {
  KeyChanges changes;
  changes.push_back({&key, std::move(value)});
  replaceValues(level, std::move(changes));
}

void TreeEdit::replaceValues(int level, KeyChanges changes) {
  replaced_ = std::move(changes);
  const bool bringsDefinitions = level > kUser && tree_.store(level).keepsChanges();
  WriteLock lock(tree_.lock());
  for (KeyChange& change : replaced_) {
    if (bringsDefinitions && !change.value.empty()) markDefinedFor(*change.key, level);
    replaceLocked(*change.key, level, change.value);
  }
}

// The caller holds the tree's lock() for writing.
void TreeEdit::replaceLocked(Key& key, int level, boost::any& value) {
  if (boostany::sameValue(key.value(level), value)) return;
  if (!tree_.formerNames().isEmpty()) tree_.formerNames().forget(level, key.pathBelowTop());
  key.replaceValue(level, value);
  changed_.add(key);
}

void TreeEdit::changeAll(ManyChanges changes) {
  structure_ = std::move(changes.structure);
  values_ = std::move(changes.values);
  {
    WriteLock lock(tree_.lock());
    for (Structure& change : structure_) {
      Node& parent = static_cast<Node&>(*change.parent);
      if (change.ofRemoval) {
        change.entry = parent.takeChild(change.entry->name());
        change.entry->setRemoved();
      } else {
        parent.insertChild(change.entry);
      }
    }
    for (LevelChange& change : values_) {
      const bool bringsDefinitions =
          change.level > kUser && tree_.store(change.level).keepsChanges();
      if (bringsDefinitions && !change.value.empty()) markDefinedFor(*change.key, change.level);
      replaceLocked(*change.key, change.level, change.value);
    }
  }
  ReadLock lock(tree_.lock());
  for (const Structure& change : structure_) {
    countStructureChange(*change.entry, static_cast<const Node&>(*change.parent));
    if (!change.ofRemoval && change.entry->isKey()) {
      Key& key = static_cast<Key&>(*change.entry);
      if (!key.effectiveValue().empty()) changed_.add(key);
    }
  }
}

void TreeEdit::insert(Node& parent, const EntryPtr& entry, int level) {
  structure_.push_back({parent.shared_from_this(), entry, std::nullopt});
  {
    WriteLock lock(tree_.lock());
    if (level > kUser) markDefinedFor(parent, level);
    parent.insertChild(entry);
  }
  ReadLock lock(tree_.lock());
  countStructureChange(*entry, parent);
}

void TreeEdit::noteChanged(Key& key) {
  ReadLock lock(tree_.lock());
  changed_.add(key);
}

void TreeEdit::remove(Node& parent, const Entry& child, Audience audience) {
  structure_.push_back({parent.shared_from_this(), {}, std::move(audience)});
  EntryPtr& removed = structure_.back().entry;
  {
    WriteLock lock(tree_.lock());
    removed = parent.takeChild(child.name());
    removed->setRemoved();
  }
  // Before another writer can add an entry of that name, which would not be counted.
  ReadLock lock(tree_.lock());
  countStructureChange(*removed, parent);
}

Changes formerErased(Key& key, int level) {
  Tree& tree = key.tree();
  ReadLock lock(tree.lock());
  if (tree.formerNames().isEmpty()) return {};
  const std::string* const former = tree.formerNames().storedUnder(level, key.pathBelowTop());
  if (!former) return {};
  return {EraseValue{*former, key.kind()}};
}

void TreeEdit::finish() {
  unlock();
  try {
    for (const Structure& change : structure_) {
      if (change.ofRemoval) {
        publishRemoved(change.parent, change.entry, *change.ofRemoval);
      } else {
        publishAdded(change.parent, change.entry);
      }
    }
    changed_.publish();
  } catch (const std::bad_alloc&) {
    // The change is made, so it must not look as if it had failed.
  }
}

}  // namespace zlutil::settings::host
