// A tree as it would be after some changes, which are not made yet (service/tree_changes.h). The
// entries that the changes add are there already, in no tree; entries that they remove and values
// that they replace are noted. One thread at a time, which holds the tree's writer() while it calls
// a function of a draft.
#pragma once

#include <map>
#include <set>
#include <vector>

#include "host/change/tree_edit.h"

namespace zlutil::settings::host {

class TreeDraft {
 public:
  // A value that a validator has to accept. The node belongs to the tree or to the draft.
  struct Judgement {
    ValidatorPtr validator;
    NodePtr node;
    KeyPtr key;
    boost::any value;
  };

  // The paths of the changes begin at `top`.
  explicit TreeDraft(NodePtr top);
  ~TreeDraft();
  TreeDraft(const TreeDraft&) = delete;
  TreeDraft& operator=(const TreeDraft&) = delete;

  // Each function makes one change, or throws why it is not possible.
  void set(const std::string& path, int level, const boost::any& value);
  void unset(const std::string& path, int level);
  void add(const std::string& path, bool isKey, const ValidatorPtr& validator, int level,
           const boost::any& value);
  void remove(const std::string& path);
  void move(const std::string& path, const std::string& target);

  const std::vector<Judgement>& judgements() const { return judgements_; }

  // Stores the changes and makes them visible. Returns false, with nothing done, if external
  // changes have come in. Throws StoreFailure, and ValidationFailure if the changes belong to two
  // stores. Called once.
  bool commit(TreeEdit& edit);

 private:
  struct Insertion {
    NodePtr parent;
    EntryPtr entry;  // null if it has been removed again
  };
  // Of a key that the tree has.
  struct Value {
    KeyPtr key;
    int level;
    boost::any value;
  };
  // A parent and a name below it.
  struct Place {
    Node& parent;
    std::string name;
  };

  // The caller of the following holds the tree's lock().
  Place requirePlace(const std::string& path) const;
  Entry* find(const Node& parent, const std::string& name) const;
  Key& requireKey(const std::string& path) const;
  bool isNew(const Entry& entry) const;
  bool isChangedBelow(const Entry& entry) const;
  bool isBelowRemoved(const Entry& entry) const;
  const boost::any& present(Key& key, int level) const;
  void checkLevel(const Entry& entry, int level) const;
  void checkRoom(const Place& place, int height) const;
  void place(const Place& place, const EntryPtr& entry);
  void take(const Place& place, Entry& entry);
  void judge(Key& key, const boost::any& value);
  void judgeMoved(const Entry& from, Entry& to);
  void note(Key& key, int level, const boost::any& value);

  int storedLevel() const;
  void dropChangesBelowRemoved();
  Changes describeAll(int level) const;
  void makeRoom();

  const NodePtr top_;
  Tree& tree_;
  std::vector<Insertion> insertions_;
  std::map<std::pair<const Node*, std::string>, std::size_t> insertionAt_;
  std::vector<EntryPtr> removals_;
  std::set<const Entry*> removed_;
  std::vector<Value> values_;
  std::map<std::pair<const Key*, int>, std::size_t> valueAt_;
  std::vector<Judgement> judgements_;
  std::vector<EntryPtr> dropped_;  // destroyed with the draft, when no lock is held
  bool isCommitted_ = false;
};

}  // namespace zlutil::settings::host
