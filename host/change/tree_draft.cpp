#include "host/change/tree_draft.h"

#include <algorithm>
#include <boost/make_shared.hpp>

#include "host/change/structure.h"
#include "host/change/value_checks.h"
#include "host/tree/subtree.h"
#include "service/failures.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

const boost::any kNothing;

template <class Pointer>
auto sharedFrom(Pointer& entry) {
  return boost::static_pointer_cast<Pointer>(entry.shared_from_this());
}

[[noreturn]] void refuse(const std::string& reason) { throw Failure<ValidationFailure>(reason); }

// Returns a new entry with the values and definition of the user level that `entry` has, and
// nothing below it.
EntryPtr twinOf(const Entry& entry, const std::string& name) {
  if (!entry.isKey()) {
    return boost::make_shared<Node>(entry.treePtr(), name, entry.canHaveListeners(),
                                    entry.validator());
  }
  const Key& key = static_cast<const Key&>(entry);
  const auto twin = boost::make_shared<Key>(entry.treePtr(), name, key.kind(),
                                            key.canHaveListeners(), key.validator());
  for (int level = key.firstLevel(); level < kLevelCount; ++level) {
    boost::any value = key.value(level);
    if (!value.empty()) twin->replaceValue(level, value);
  }
  return twin;
}

}  // namespace

TreeDraft::TreeDraft(NodePtr top) : top_(std::move(top)), tree_(top_->tree()) {}

TreeDraft::~TreeDraft() {
  if (isCommitted_) return;
  // They point at nodes of the tree, which do not know them.
  for (const Insertion& insertion : insertions_) {
    if (insertion.entry) insertion.entry->setParent(nullptr);
  }
}

Entry* TreeDraft::find(const Node& parent, const std::string& name) const {
  const auto inserted = insertionAt_.find({&parent, name});
  if (inserted != insertionAt_.end() && insertions_[inserted->second].entry) {
    return insertions_[inserted->second].entry.get();
  }
  Entry* const entry = parent.child(name);
  return entry && removed_.count(entry) == 0 ? entry : nullptr;
}

TreeDraft::Place TreeDraft::requirePlace(const std::string& path) const {
  if (!top_->isAttached()) throw Failure<NoSuchNode>(std::string("(removed)"), top_->name());
  Node* at = top_.get();
  std::size_t begin = 0;
  for (std::size_t dot; (dot = path.find('.', begin)) != std::string::npos; begin = dot + 1) {
    const std::string name = path.substr(begin, dot - begin);
    Entry* const next = find(*at, name);
    if (!next) throw Failure<NoSuchNode>(at->name(), name);
    if (next->isKey()) throw Failure<NotANodeName>(at->name(), name);
    at = static_cast<Node*>(next);
  }
  return {*at, path.substr(begin)};
}

Key& TreeDraft::requireKey(const std::string& path) const {
  const Place place = requirePlace(path);
  Entry* const entry = find(place.parent, place.name);
  if (!entry) throw Failure<NoSuchKey>(place.parent.name(), place.name);
  if (!entry->isKey()) throw Failure<NotAKeyName>(place.parent.name(), place.name);
  return static_cast<Key&>(*entry);
}

bool TreeDraft::isNew(const Entry& entry) const {
  for (const Entry* at = &entry; at->parent(); at = at->parent()) {
    const auto inserted = insertionAt_.find({at->parent(), at->name()});
    if (inserted != insertionAt_.end() && insertions_[inserted->second].entry.get() == at) {
      return true;
    }
  }
  return false;
}

bool TreeDraft::isBelowRemoved(const Entry& entry) const {
  for (const Entry* at = &entry; at; at = at->parent()) {
    if (removed_.count(at) > 0) return true;
  }
  return false;
}

// Returns whether something at the entry, which the tree has, or below it has been changed.
bool TreeDraft::isChangedBelow(const Entry& entry) const {
  const auto isBelow = [&](const Entry* at) {
    while (at && at != &entry) at = at->parent();
    return at != nullptr;
  };
  for (const Insertion& insertion : insertions_) {
    if (insertion.entry && isBelow(insertion.parent.get())) return true;
  }
  for (const EntryPtr& removal : removals_) {
    if (isBelow(removal.get())) return true;
  }
  for (const Value& value : values_) {
    if (isBelow(value.key.get())) return true;
  }
  return false;
}

const boost::any& TreeDraft::present(Key& key, int level) const {
  const auto noted = valueAt_.find({&key, level});
  return noted == valueAt_.end() ? key.value(level) : values_[noted->second].value;
}

void TreeDraft::checkLevel(const Entry& entry, int level) const {
  checkWritable(entry, level);
  if (level > kUser && tree_.store(level).keepsChanges() && isNew(entry)) {
    throw Failure<CantModifyValuesOnReadOnlyLevel>(
        entry.path(), levelName(level),
        std::string("the entry is stored at the user level, and two stores cannot change as one. "
                    "Set this value afterwards"));
  }
}

void TreeDraft::judge(Key& key, const boost::any& value) {
  if (const ValidatorPtr validator = key.effectiveValidator()) {
    judgements_.push_back({validator, sharedFrom(*key.parent()), sharedFrom(key), value});
  }
}

// Judges the values of a moved subtree whose keys have got another validator.
void TreeDraft::judgeMoved(const Entry& from, Entry& to) {
  if (to.isKey()) {
    if (from.effectiveValidator() == to.effectiveValidator()) return;
    for (int level = 0; level < kLevelCount; ++level) {
      Key& key = static_cast<Key&>(to);
      if (!key.value(level).empty()) judge(key, key.value(level));
    }
    return;
  }
  const Node& source = static_cast<const Node&>(from);
  for (const EntryPtr& child : static_cast<Node&>(to).childrenByName()) {
    judgeMoved(*source.child(child->name()), *child);
  }
}

void TreeDraft::note(Key& key, int level, const boost::any& value) {
  if (isNew(key)) {
    boost::any copy = boostany::ownCopy(value);
    return key.replaceValue(level, copy);
  }
  const auto [at, isFirst] = valueAt_.emplace(std::make_pair(&key, level), values_.size());
  if (isFirst) {
    values_.push_back({sharedFrom(key), level, boostany::ownCopy(value)});
  } else {
    values_[at->second].value = boostany::ownCopy(value);
  }
}

void TreeDraft::set(const std::string& path, int level, const boost::any& value) {
  ReadLock lock(tree_.lock());
  Key& key = requireKey(path);
  checkLevel(key, level);
  int kind = key.kind();
  // The first of several values of a key without a kind fixes it.
  for (int other = 0; kind == boostany::kNoValue && other < kLevelCount; ++other) {
    kind = boostany::kindOfValue(present(key, other));
  }
  checkKind(key, kind, value);
  judge(key, value);
  note(key, level, value);
}

void TreeDraft::unset(const std::string& path, int level) {
  ReadLock lock(tree_.lock());
  Key& key = requireKey(path);
  checkLevel(key, level);
  if (present(key, level).empty()) {
    throw Failure<ValueNotDefinedForGivenLevel>(key.path(), levelName(level));
  }
  note(key, level, kNothing);
}

void TreeDraft::checkRoom(const Place& place, int height) const {
  checkNewEntry(place.parent, place.name);
  if (find(place.parent, place.name)) {
    throw Failure<ErrorAddingChildNodeOrKey>(place.parent.name(), place.name,
                                             std::string("the name is taken"));
  }
  checkDepth(place.parent, place.name, height);
  checkWritable(place.parent, kUser);
}

// Notes the entry, which nobody else knows, as a child of the place's node.
void TreeDraft::place(const Place& place, const EntryPtr& entry) {
  if (isNew(place.parent)) {
    place.parent.insertChild(entry);
    return;
  }
  insertionAt_[{&place.parent, place.name}] = insertions_.size();
  insertions_.push_back({sharedFrom(place.parent), entry});
  entry->setParent(&place.parent);
}

void TreeDraft::add(const std::string& path, bool isKey, const ValidatorPtr& validator, int level,
                    const boost::any& value) {
  EntryPtr entry;  // destroyed without the lock
  const std::string name = path.substr(path.rfind('.') + 1);
  if (isKey) {
    entry = boost::make_shared<Key>(top_->treePtr(), name, boostany::kNoValue, true, validator);
  } else {
    entry = boost::make_shared<Node>(top_->treePtr(), name, true, validator);
  }
  ReadLock lock(tree_.lock());
  const Place at = requirePlace(path);
  checkRoom(at, 0);
  if (!value.empty()) checkKind(static_cast<Key&>(*entry), boostany::kNoValue, value);
  place(at, entry);
  if (value.empty()) return;
  checkLevel(*entry, level);
  judge(static_cast<Key&>(*entry), value);
  note(static_cast<Key&>(*entry), level, value);
}

// Removes the entry from the draft.
void TreeDraft::take(const Place& place, Entry& entry) {
  dropped_.push_back(entry.shared_from_this());
  const auto inserted = insertionAt_.find({&place.parent, place.name});
  if (inserted != insertionAt_.end() && insertions_[inserted->second].entry.get() == &entry) {
    entry.setParent(nullptr);
    insertions_[inserted->second].entry.reset();
    insertionAt_.erase(inserted);
  } else if (isNew(entry)) {
    place.parent.takeChild(place.name);
  } else {
    checkRemovable(entry);
    removals_.push_back(entry.shared_from_this());
    removed_.insert(&entry);
  }
}

void TreeDraft::remove(const std::string& path) {
  ReadLock lock(tree_.lock());
  const Place at = requirePlace(path);
  Entry* const entry = find(at.parent, at.name);
  if (!entry) throw Failure<NoSuchNode>(at.parent.name(), at.name);
  take(at, *entry);
}

void TreeDraft::move(const std::string& path, const std::string& target) {
  EntryPtr twin;  // destroyed without the lock
  ReadLock lock(tree_.lock());
  const Place from = requirePlace(path);
  Entry* const entry = find(from.parent, from.name);
  if (!entry) throw Failure<NoSuchNode>(from.parent.name(), from.name);
  if (!isNew(*entry) && isChangedBelow(*entry)) {
    refuse("\"" + path + "\" has been changed before it is moved. Move it first.");
  }
  const Place to = requirePlace(target);
  for (const Entry* at = &to.parent; at; at = at->parent()) {
    if (at == entry)
      refuse("\"" + path + "\" cannot be moved below itself, to \"" + target + "\".");
  }
  twin = twinOf(*entry, to.name);
  if (!entry->isKey()) copyChildren(static_cast<Node&>(*entry), static_cast<Node&>(*twin));
  checkRoom(to, heightOf(*entry));
  place(to, twin);
  judgeMoved(*entry, *twin);
  take(from, *entry);
}

// Leaves out what has been changed below an entry before that was removed.
void TreeDraft::dropChangesBelowRemoved() {
  ReadLock lock(tree_.lock());
  for (Insertion& insertion : insertions_) {
    if (!insertion.entry || !isBelowRemoved(*insertion.parent)) continue;
    insertion.entry->setParent(nullptr);
    dropped_.push_back(std::move(insertion.entry));
  }
  const auto drop = [](auto& list, const auto& isDropped) {
    list.erase(std::remove_if(list.begin(), list.end(), isDropped), list.end());
  };
  drop(removals_, [&](const EntryPtr& removal) { return isBelowRemoved(*removal->parent()); });
  drop(values_, [&](const Value& value) { return isBelowRemoved(*value.key); });
}

// Returns the level whose store has to keep the changes.
int TreeDraft::storedLevel() const {
  std::set<int> levels;
  const auto add = [&](int level) {
    if (tree_.store(level).keepsChanges()) levels.insert(level);
  };
  for (const Insertion& insertion : insertions_) {
    if (insertion.entry) add(kUser);
  }
  if (!removals_.empty()) add(kUser);
  for (const Value& value : values_) add(value.level);
  if (levels.size() > 1) {
    refuse("The changes are stored at the levels \"" + levelName(*levels.begin()) + "\" and \"" +
           levelName(*levels.rbegin()) +
           "\", and two stores cannot change as one. Make a transaction for each level.");
  }
  return levels.empty() ? kSession : *levels.begin();
}

Changes TreeDraft::describeAll(int level) const {
  Changes changes;
  for (const EntryPtr& removal : removals_) changes.push_back(RemoveSubtree{removal->path()});
  for (const Insertion& insertion : insertions_) {
    if (insertion.entry) {
      describe(*insertion.entry, insertion.entry->path(), level, true, changes);
    }
  }
  for (const Value& value : values_) {
    if (value.level != level) continue;
    const std::string path = value.key->path();
    if (level > kUser) describeFor(*value.key, level, changes);
    if (value.value.empty()) {
      changes.push_back(EraseValue{path, value.key->kind()});
      continue;
    }
    if (value.key->kind() == boostany::kNoValue) {
      changes.push_back(FixKind{path, boostany::kindOfValue(value.value)});
    }
    changes.push_back(PutValue{path, value.value});
  }
  return changes;
}

// Prepares the insertions, so that they cannot fail after they have been stored.
void TreeDraft::makeRoom() {
  std::map<Node*, std::size_t> counts;
  for (const Insertion& insertion : insertions_) {
    if (insertion.entry) ++counts[insertion.parent.get()];
  }
  WriteLock lock(tree_.lock());
  for (const auto& [parent, count] : counts) parent->makeRoomForChildren(count);
}

bool TreeDraft::commit(TreeEdit& edit) {
  Changes changes;
  TreeEdit::ManyChanges visible;
  dropChangesBelowRemoved();
  const int level = storedLevel();
  for (const Value& value : values_) {
    if (value.level != level) continue;
    const Changes former = formerErased(*value.key, level);
    changes.insert(changes.end(), former.begin(), former.end());
  }
  {
    ReadLock lock(tree_.lock());
    const Changes all = describeAll(level);
    changes.insert(changes.end(), all.begin(), all.end());
    for (const EntryPtr& removal : removals_) {
      visible.structure.push_back(
          {removal->parent()->shared_from_this(), removal, audienceOfRemoval(*removal)});
    }
    for (Insertion& insertion : insertions_) {
      if (!insertion.entry) continue;
      visible.structure.push_back({insertion.parent, insertion.entry, std::nullopt});
    }
    for (const Value& value : values_) {
      visible.values.push_back({value.key.get(), value.level, boostany::ownCopy(value.value)});
    }
  }
  if (visible.structure.empty() && visible.values.empty()) return true;
  makeRoom();
  const auto describeThem = [&]() -> const Changes& { return changes; };
  if (!edit.store(level, describeThem, [] { return false; })) return false;
  isCommitted_ = true;
  for (const Insertion& insertion : insertions_) {
    if (insertion.entry) markDefinedAt(*insertion.entry, kUser);
  }
  edit.changeAll(std::move(visible));
  return true;
}

}  // namespace zlutil::settings::host
