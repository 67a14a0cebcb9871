// One change of a tree. Every change of values or entries takes the same steps:
//
//   1. validate  The caller finds the validator in a first edit, ends that, and runs it.
//   2. lock      The constructor acquires the tree's writer().
//   3. check     The caller checks that the change is possible, and still judged by the validator
//                that has run.
//   4. store     store() hands the change to the level's store. The store first hands over what
//                other processes have changed; the edit applies that to the tree, and the caller
//                checks again.
//   5. memory    replaceValue(), insert() and remove() change the entries and the change counters.
//   6. unlock    finish() releases writer().
//   7. publish   finish() publishes the events on this thread. Then what was replaced is destroyed.
//
// Lock rules. writer() is held from step 2 to step 6, also during the store's I/O. lock() is
// acquired for writing where memory changes, in step 5 and for external changes in step 4, and for
// reading wherever entries are read that may stand in a removed subtree. No lock is held while a
// validator or a listener runs; lock() is not held while an entry or a value is destroyed. Once a
// change is stored it reaches the memory: what step 5 needs is allocated before step 4. Without
// memory for an event, the change is made and its listeners are not called.
//
// An edit that ends without finish() publishes no events of its own. One thread at a time.
#pragma once

#include <boost/container/small_vector.hpp>
#include <functional>
#include <optional>

#include "host/change/external_changes.h"
#include "host/change/publication.h"
#include "values/number_bits.h"

namespace zlutil::settings::host {

// A key and the value that replaces its value at the level of the edit.
struct KeyChange {
  Key* key;
  boost::any value;
};
using KeyChanges = boost::container::small_vector<KeyChange, 1>;

class TreeEdit {
 public:
  enum Priority { kOrdinary, kAhead };

  // An entry that is inserted or, with the audience of its removal, removed.
  struct Structure {
    boost::shared_ptr<Settings> parent;
    EntryPtr entry;
    std::optional<Audience> ofRemoval;
  };
  using Structures = boost::container::small_vector<Structure, 1>;
  // The value that replaces that of a key at a level.
  struct LevelChange {
    Key* key;
    int level;
    boost::any value;
  };
  // Removals come before insertions.
  struct ManyChanges {
    Structures structure;
    std::vector<LevelChange> values;
  };

  // Acquires the tree's writer(). With kAhead, each other thread acquires it at most once before.
  explicit TreeEdit(Tree& tree, Priority priority = kOrdinary);
  ~TreeEdit();
  TreeEdit(const TreeEdit&) = delete;
  TreeEdit& operator=(const TreeEdit&) = delete;

  // Stores the changes that `describe()` returns, if the level's store keeps changes. Returns
  // false, with nothing stored, if `isPossible()` returns false after changes by other processes
  // have come into the tree. Throws StoreFailure.
  template <class Describe, class IsPossible>
  bool store(int level, const Describe& describe, const IsPossible& isPossible) {
    if (!tree_.store(level).keepsChanges()) return true;
    return apply(level, describe(), isPossible);
  }

  // Applies what other processes have changed in the level's store.
  void catchUp(int level);
  // The same, but throws UnreadableStore if the store cannot be asked.
  void synchronize(int level);

  // Replaces values at the level, and notes the keys whose values have changed, for publication.
  void replaceValue(Key& key, int level, boost::any value);
  void replaceValues(int level, KeyChanges changes);
  // Does the same for a number. If the level has a value, allocates nothing.
  template <class Number>
  void replaceNumber(Key& key, int level, Number number) {
    {
      WriteLock lock(tree_.lock());
      if (Number* const stored = key.storedValue<Number>(level)) {
        if (boostany::toBits(*stored) == boostany::toBits(number)) return;
        *stored = number;
        key.countChange();
        changed_.add(key);
        return;
      }
    }
    replaceValue(key, level, number);
  }

  // Inserts the entry, which only this thread knows and the level's store keeps, below the parent.
  // parent.makeRoomForChild() has been called.
  void insert(Node& parent, const EntryPtr& entry, int level);

  // Makes all changes visible at once, and does for each what insert(), remove() and replaceValue()
  // do. makeRoomForChildren() has been called for the insertions. Allocates nothing but events.
  void changeAll(ManyChanges changes);

  // Notes a change of the key that an insertion has brought.
  void noteChanged(Key& key);

  // Removes the child from its parent. `audience` is audienceOfRemoval() of the child.
  void remove(Node& parent, const Entry& child, Audience audience);

  // Releases the writer, publishes the events and destroys what was replaced.
  void finish();

 private:
  bool apply(int level, const Changes& changes, const std::function<bool()>& isPossible);
  Store::Receiver receiver(int level);
  void replaceLocked(Key& key, int level, boost::any& value);
  void unlock();

  Tree& tree_;
  bool isLocked_ = true;
  bool hasExternalEvents_ = false;
  KeyChanges replaced_;
  ChangedKeys changed_;
  Structures structure_;
  std::vector<LevelChange> values_;
};

// Returns what a store has to do beside a change of the key's value: to erase one under a former
// path of the key. The caller holds the tree's writer().
Changes formerErased(Key& key, int level);

// Repeats `attempt(edit)`, each time with a new edit of the tree, until it returns true, and then
// finishes the edit.
template <class Attempt>
void editTree(Tree& tree, const Attempt& attempt) {
  while (true) {
    TreeEdit edit(tree);
    if (attempt(edit)) return edit.finish();
  }
}

}  // namespace zlutil::settings::host
