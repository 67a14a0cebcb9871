// What stands behind one level of a tree: where the level's values come from and where they are
// kept. The tree holds every value in memory itself; a store holds what must outlive the tree.
//
// A store belongs to one tree and one level. The tree calls it from any thread, one call at a time
// but for look(), with no lock on the tree's memory held; calls may do I/O. The store calls the
// tree back only through the functions that it is given.
#pragma once

#include <boost/any.hpp>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "service/validators.h"

namespace zlutil::settings::host {

class Node;

// One change of what a store holds. Paths are the names below the tree's root joined with ".".
struct PutValue {
  std::string path;
  boost::any value;
};
struct EraseValue {
  std::string path;
};
// An entry that was added at run time; its parent is defined already. `kind` is the key's kind, or
// kNoValue for a node and for a key that has no type yet. A C++ validator is code and is not kept.
struct DefineEntry {
  std::string path;
  bool isKey;
  int kind;
  ValidatorChoice validator;
};
// An entry with everything below it, definitions and values.
struct RemoveSubtree {
  std::string path;
};
// The kind of a key that had none: its first value has fixed it, also for when that value goes.
struct FixKind {
  std::string path;
  int kind;
};
using Change = std::variant<PutValue, EraseValue, DefineEntry, RemoveSubtree, FixKind>;
using Changes = std::vector<Change>;

// What others have changed and the tree does not have yet.
struct ExternalChanges {
  Changes changes;
  // Whether it is all that the store holds, because nobody knows any more what has changed.
  bool isEverything = false;
  // What holds it, by the name to use in messages; narrow text.
  std::string holder;
};

class Store {
 public:
  // Brings changes by others into the tree. False when the change that is about to be stored cannot
  // be made any more. Called with the tree's writer() held.
  using Receiver = std::function<bool(const ExternalChanges& changes)>;
  using Watcher = std::function<void()>;

  virtual ~Store() = default;

  // Adds everything that it holds to the tree below `root`, its values at `level`. Called once,
  // before anyone else knows the tree. What cannot be read is reported on standard error and left
  // out; it does not throw for it.
  virtual void readAll(Node& root, int level) = 0;

  // Applies the changes in order, all of them or, when it throws StoreFailure, none. Gives
  // `receive` what others have changed first; nobody can change more until the changes are stored.
  // False, and nothing stored, when `receive` says so.
  virtual bool apply(const Changes& changes, const Receiver& receive) = 0;

  // Gives `receive` what others have changed, if they have. Does not throw for what cannot be read.
  virtual void catchUp(const Receiver& receive) = 0;

  // False when nothing outlives the tree: the tree then need not describe its changes, and does not
  // call apply().
  virtual bool keepsChanges() const = 0;

  // Whether the tree has all that the store holds; false when others may have changed something of
  // which the tree has not been told. The caller holds the tree's writer().
  virtual bool isCurrent() = 0;

  // Why values cannot be changed; empty when they can. Constant for the life of the store.
  virtual const std::string& readOnlyReason() const = 0;

  // From now on calls `watcher`, on a thread of the store's, when others have changed what it
  // holds; the tree then has to catch up. No call is running or begins once the store's destructor
  // has returned; except that the watcher itself may let go of the store. False when the process
  // can have no such thread: the tree then has to call look() whenever it matters.
  virtual bool watch(const Watcher& watcher) = 0;

  // Does at once what the thread would do. Any thread, any time after watch(), with no lock held.
  virtual void look() = 0;
};

}  // namespace zlutil::settings::host
