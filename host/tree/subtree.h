// Operations on whole subtrees. Every recursion is bounded by kMaxDepth.
#pragma once

#include <algorithm>

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Returns the number of entries on the deepest path below `entry`; 0 for a key and an empty node.
// The caller holds the tree's lock().
int heightOf(const Entry& entry);

// Copies all entries below `source`, with new identities and the values of every level that counts,
// but no locks, into `copy`, a new node that no other thread knows. The caller holds the lock() of
// the source's tree. If it throws, the half-made entries belong to `copy`, which the caller must
// not destroy under that lock.
void copyChildren(const Node& source, Node& copy);

// Moves values from the other levels with stores in `tree` to the user level, unless the key has
// one there, so that every key keeps its effective value. No other thread knows the entry.
void moveToWritableLevels(Entry& entry, const Tree& tree);

// Finds the first level that counts, by the locks, for the entry and for those below it. Calls
// `changed(key)` for each key that gets another one. The caller holds the tree's lock() for
// writing, or no other thread knows the entry.
template <class Changed>
void findFirstLevels(Entry& entry, const Changed& changed) {
  const int above = entry.parent() ? static_cast<Entry*>(entry.parent())->firstLevel() : kSession;
  const int first = std::max(above, entry.lock().second);
  if (entry.firstLevel() == first) return;
  entry.setFirstLevel(first);
  if (entry.isKey()) return changed(static_cast<Key&>(entry));
  for (const EntryPtr& child : static_cast<Node&>(entry).childrenByName()) {
    findFirstLevels(*child, changed);
  }
}
inline void findFirstLevels(Entry& entry) {
  findFirstLevels(entry, [](Key&) {});
}

// Marks the entry and all entries below it as defined at the level.
void markDefinedAt(Entry& entry, int level);

// Adds to `changes` the definitions that a store below the user level lacks for a value of the
// entry: those of the entry and of the entries above it that neither this level nor a lower one
// defines. markDefinedFor() marks them as defined at the level. The caller holds the tree's lock(),
// for writing in the second case.
void describeFor(const Entry& entry, int level, Changes& changes);
void markDefinedFor(Entry& entry, int level);

// Adds to `changes` what a store must do to hold the subtree at `path`: the definitions if `define`
// is true, and the values of `level`.
void describe(const Entry& entry, const std::string& path, int level, bool define,
              Changes& changes);

// Counts, for readers that cache values, that the subtree has entered the tree below `parent` or
// left it. The caller holds the tree's lock().
void countStructureChange(const Entry& entry, const Node& parent);

// Moves the entries and the values of the level from `from` to `into`, which has the same kinds. An
// entry keeps the first validator and the first lock that it was given. No other thread knows
// either tree.
void merge(Node& from, Node& into, int level);

}  // namespace zlutil::settings::host
