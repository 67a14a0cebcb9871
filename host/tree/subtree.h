// Whole subtrees: measuring, copying and describing them. Every recursion is bounded by kMaxDepth.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// How many entries the deepest path below `entry` has; 0 for a key and an empty node. Reads what
// the tree guards.
int heightOf(const Entry& entry);

// Copies all that stands below `source` into `copy`, a new node that nobody else knows, with new
// identities. The copy holds the values of every level as they are. Reads what the source's tree
// guards; when it throws, what it has made so far belongs to `copy`, which the caller must not let
// go of under that lock.
void copyChildren(const Node& source, Node& copy);

// Moves values from the levels that are read-only in `tree` to the user level, where the key has
// none yet, so that every key has the same value in effect as before. Nobody else knows the entry.
void moveToWritableLevels(Entry& entry, const Tree& tree);

// Marks the entry and all below it as defined at the level.
void markDefinedAt(Entry& entry, int level);

// Adds to `changes` what a store has to do to hold the subtree, whose top has the path `path`: the
// definitions when `define` is true, and the values of `level`.
void describe(const Entry& entry, const std::string& path, int level, bool define,
              Changes& changes);

// Counts, for readers that keep what they have read, that the entry with all below it has entered
// the tree below `parent` or left it. Reads what the tree guards.
void countStructureChange(const Entry& entry, const Node& parent);

// Moves what `from` holds at the level into `into`, which agrees with it in kinds. The first
// validator that an entry was given stays. Nobody else knows either tree.
void merge(Node& from, Node& into, int level);

}  // namespace zlutil::settings::host
