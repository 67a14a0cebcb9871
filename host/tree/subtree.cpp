#include "host/tree/subtree.h"

#include <algorithm>
#include <boost/make_shared.hpp>

#include "service/change_counters.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

void mergeEntry(Entry& from, Entry& into, int level) {
  if (from.isDefinedAt(level)) into.setDefinedAt(level);
  if (const DefinitionPtr part = from.definition(level)) {
    into.setDefinition(level, completed(into.definition(level), *part));
    findFirstLevels(into);
  }
  if (!into.isKey()) {
    merge(static_cast<Node&>(from), static_cast<Node&>(into), level);
    return;
  }
  Key& key = static_cast<Key&>(from);
  Key& target = static_cast<Key&>(into);
  boost::any value;
  key.replaceValue(level, value);
  if (!value.empty()) target.replaceValue(level, value);
  if (target.kind() == boostany::kNoValue) target.setKind(key.kind());
}

// Counts a change of each key in the subtree, and of the list of each node's children.
void countEntries(const Entry& entry, const Node& parent) {
  if (entry.isKey()) return ChangeCounters::add(parent.name(), entry.name());
  const Node& node = static_cast<const Node&>(entry);
  ChangeCounters::addList(node.name());
  for (const EntryPtr& child : node.childrenByName()) countEntries(*child, node);
}

// Returns whether the stores of the level and of the lower ones leave the entry undefined.
bool isUndefinedFrom(const Entry& entry, int level) {
  while (level < kLevelCount && !entry.isDefinedAt(level)) ++level;
  return level == kLevelCount;
}

}  // namespace

int heightOf(const Entry& entry) {
  if (entry.isKey()) return 0;
  int height = 0;
  for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
    height = std::max(height, 1 + heightOf(*child));
  }
  return height;
}

void copyChildren(const Node& source, Node& copy) {
  for (const EntryPtr& child : source.childrenByName()) {
    if (child->isKey()) {
      const Key& key = static_cast<const Key&>(*child);
      const auto twin = boost::make_shared<Key>(copy.treePtr(), key.name(), key.kind(),
                                                key.canHaveListeners(), key.validator());
      for (int level = key.firstLevel(); level < kLevelCount; ++level) {
        boost::any value = key.value(level);
        if (!value.empty()) twin->replaceValue(level, value);
      }
      copy.insertChild(twin);
    } else {
      const auto twin = boost::make_shared<Node>(copy.treePtr(), child->name(),
                                                 child->canHaveListeners(), child->validator());
      // Inserted first, so that no node with children is destroyed under the lock if copying
      // throws.
      copy.insertChild(twin);
      copyChildren(static_cast<const Node&>(*child), *twin);
    }
  }
}

void moveToWritableLevels(Entry& entry, const Tree& tree) {
  if (!entry.isKey()) {
    for (const EntryPtr& child : static_cast<Node&>(entry).childrenByName()) {
      moveToWritableLevels(*child, tree);
    }
    return;
  }
  Key& key = static_cast<Key&>(entry);
  for (int level = 0; level < kLevelCount; ++level) {
    if (level == kUser || !tree.store(level).keepsChanges() || key.value(level).empty()) continue;
    boost::any value;
    key.replaceValue(level, value);
    // The first of these values was the effective one among them.
    if (key.value(kUser).empty()) key.replaceValue(kUser, value);
  }
}

void markDefinedAt(Entry& entry, int level) {
  entry.setDefinedAt(level);
  if (entry.isKey()) return;
  for (const EntryPtr& child : static_cast<Node&>(entry).childrenByName()) {
    markDefinedAt(*child, level);
  }
}

void describeFor(const Entry& entry, int level, Changes& changes) {
  if (!entry.parent() || !isUndefinedFrom(entry, level)) return;
  describeFor(*entry.parent(), level, changes);
  const int kind = entry.isKey() ? static_cast<const Key&>(entry).kind() : boostany::kNoValue;
  changes.push_back(DefineEntry{entry.path(), entry.isKey(), kind, choiceOf(entry.validator())});
}

void markDefinedFor(Entry& entry, int level) {
  for (Entry* at = &entry; at->parent() && isUndefinedFrom(*at, level); at = at->parent()) {
    at->setDefinedAt(level);
  }
}

void describe(const Entry& entry, const std::string& path, int level, bool define,
              Changes& changes) {
  if (entry.isKey()) {
    const Key& key = static_cast<const Key&>(entry);
    if (define) {
      changes.push_back(DefineEntry{path, true, key.kind(), choiceOf(key.validator())});
    }
    if (!key.value(level).empty()) changes.push_back(PutValue{path, key.value(level)});
    return;
  }
  if (define) changes.push_back(DefineEntry{path, false, 0, choiceOf(entry.validator())});
  for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
    describe(*child, path + '.' + child->name(), level, define, changes);
  }
}

void countStructureChange(const Entry& entry, const Node& parent) {
  ChangeCounters::addList(parent.name());
  countEntries(entry, parent);
}

void merge(Node& from, Node& into, int level) {
  const std::vector<EntryPtr> children = from.takeChildren();
  for (const EntryPtr& child : children) {
    if (Entry* const present = into.child(child->name())) {
      mergeEntry(*child, *present, level);
    } else {
      into.insertChild(child);
    }
  }
}

}  // namespace zlutil::settings::host
