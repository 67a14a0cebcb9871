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
    if (boostany::sameValue(change.key->value(level), change.value)) continue;
    if (!tree_.formerNames().isEmpty()) {
      tree_.formerNames().forget(level, change.key->pathBelowTop());
    }
    change.key->replaceValue(level, change.value);
    changed_.add(*change.key);
  }
}

void TreeEdit::insert(Node& parent, const EntryPtr& entry, int level) {
  structure_ = {parent.shared_from_this(), entry, std::nullopt};
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
  structure_ = {parent.shared_from_this(), {}, std::move(audience)};
  {
    WriteLock lock(tree_.lock());
    structure_.entry = parent.takeChild(child.name());
    structure_.entry->setRemoved();
  }
  // Before another writer can add an entry of that name, which would not be counted.
  ReadLock lock(tree_.lock());
  countStructureChange(*structure_.entry, parent);
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
    if (structure_.ofRemoval) {
      publishRemoved(structure_.parent, structure_.entry, *structure_.ofRemoval);
    } else if (structure_.entry) {
      publishAdded(structure_.parent, structure_.entry);
    }
    changed_.publish();
  } catch (const std::bad_alloc&) {
    // The change is made, so it must not look as if it had failed.
  }
}

}  // namespace zlutil::settings::host
