// The persistence of one level of a tree. The tree has all values in memory; a store keeps what
// must outlive the tree.
//
// A store belongs to one tree and one level. The tree calls it from any thread, one call at a time;
// look() may run beside any call. The tree never holds its lock() meanwhile; calls may do I/O. The
// store calls the tree only through the functions that it is given. host/roots/context_trees.cpp
// chooses the stores of a tree.
#pragma once

#include <boost/any.hpp>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "service/validators.h"

namespace zlutil::settings::host {

class Node;
class StoreArchive;

// A change of a store's content. A path has the names below the tree's root, joined with ".".
struct PutValue {
  std::string path;
  boost::any value;
};
struct EraseValue {
  std::string path;
  int kind = 0;  // of the key; kNoValue if it is not known
};
// An entry that was added at run time; its parent is defined already. `kind` is the key's kind, or
// kNoValue for a node and for a key whose kind is not fixed. A C++ validator is code and is not
// stored.
struct DefineEntry {
  std::string path;
  bool isKey;
  int kind;
  ValidatorChoice validator;
};
// An entry with all entries below it, their definitions and values.
struct RemoveSubtree {
  std::string path;
};
// The kind of a key that had none. The first value has fixed it; it stays when that value is unset.
struct FixKind {
  std::string path;
  int kind;
};
using Change = std::variant<PutValue, EraseValue, DefineEntry, RemoveSubtree, FixKind>;
using Changes = std::vector<Change>;

// Stored changes, or the whole stored content, that the tree does not have yet.
struct ExternalChanges {
  Changes changes;
  // Whether `changes` is the whole content of the store, because the changes are not known.
  bool isEverything = false;
  // The name of the store in messages; narrow text.
  std::string holder;
};

class Store {
 public:
  // Applies external changes to the tree. Returns false if the change that is about to be stored
  // has become impossible. The caller holds the tree's writer().
  using Receiver = std::function<bool(const ExternalChanges& changes)>;
  using Watcher = std::function<void()>;

  virtual ~Store() = default;

  // Adds the whole content to the tree below `root`, the values at `level`. Called once, before any
  // other thread knows the tree. Reports (host/os/log_error.h), and leaves out, what cannot be
  // read.
  virtual void readAll(Node& root, int level) = 0;

  // Stores the changes in order: all of them or, if it throws StoreFailure, none. First hands
  // external changes to `receive`; no other process can change more until the changes are stored.
  // Returns false, with nothing stored, if `receive` returns false.
  virtual bool apply(const Changes& changes, const Receiver& receive) = 0;

  // Hands external changes to `receive`, if there are any. Does not throw if they cannot be read.
  virtual void catchUp(const Receiver& receive) = 0;

  // Hands all external changes that were stored before the call to `receive`. Throws
  // UnreadableStore if the store cannot be asked for them.
  virtual void synchronize(const Receiver& receive) = 0;

  // Returns whether the tree must call apply() for a change. A read-only store returns true, and
  // its apply() throws.
  virtual bool keepsChanges() const = 0;

  // Returns false if there may be external changes that the tree does not have. The caller holds
  // the tree's writer().
  virtual bool isCurrent() = 0;

  // The reason why values cannot be changed; empty if they can. Constant.
  virtual const std::string& readOnlyReason() const = 0;

  // Returns the messages about parts of the content that could not be read and are left out, such
  // as files. Narrow texts. Any thread.
  virtual std::vector<std::string> unreadable() const { return {}; }

  // Returns where the store has the value of a key from, for people, or nothing if that is not
  // known. Narrow text. Any thread, with no lock held; may read files.
  virtual std::string sourceOf(const std::string& path) const = 0;

  // From now on calls `watcher`, on a thread of the store, when there are external changes; the
  // tree then calls catchUp(). No call is running once the store's destructor has returned, except
  // one that has destroyed the store itself. Returns false if the process can start no thread: the
  // tree then must call look() before every read and change.
  virtual bool watch(const Watcher& watcher) = 0;

  // Returns the store's history and copies; null if it keeps none. Constant.
  virtual StoreArchive* archive() { return nullptr; }

  // Looks for external changes now, as the thread does. Any thread, after watch(), with no lock
  // held.
  virtual void look() = 0;
};

}  // namespace zlutil::settings::host
