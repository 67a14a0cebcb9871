// One value at a time: setAny and unset.
#include "host/change/commit.h"
#include "host/change/external_changes.h"
#include "host/change/external_events.h"
#include "host/change/given_text.h"
#include "host/change/new_key.h"
#include "host/change/publication.h"
#include "host/change/value_checks.h"
#include "service/failures.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

// The change of one key at one level. An attempt looks the key up, and ends when others have
// changed what it has found; the next one finds out what that means.
class ValueChange {
 public:
  ValueChange(Node& node, const std::string& name, const std::string& level)
      : node_(node), tree_(node.tree()), name_(name), level_(requireLevel(level)) {}

  void set(const boost::any& value) {
    ValidatorPtr validated;
    while (!trySetting(value, validated)) {
    }
    changed_.publish();
  }

  void unset() {
    while (!tryUnsetting()) {
    }
    changed_.publish();
  }

 private:
  // What has been found, under the tree's lock.
  struct Found {
    Key* key;
    ValidatorPtr guard;
    std::string path;  // if the level's store keeps changes
  };

  Found find(const boost::any* value) const {
    ReadLock lock(tree_.lock());
    Found found{&node_.requireKey(name_), {}, {}};
    checkWritable(*found.key, level_);
    if (value) {
      checkKind(*found.key, found.key->kind(), *value);
      found.guard = found.key->guard();
    }
    if (!found.key->isAttached()) throw Failure<NoSuchKey>(node_.name(), name_);
    if (store().keepsChanges()) found.path = found.key->path();
    return found;
  }

  // A validator is somebody else's code and runs without a lock. False when it is another one by
  // the time that the lock is there.
  bool trySetting(const boost::any& value, ValidatorPtr& validated) {
    const TellOfOthers telling(tree_);
    ValidatorPtr guard;
    {
      WriterLock writer(tree_.writer());
      const Found found = find(&value);
      if (found.guard == validated) return storeAndShow(found, value);
      guard = found.guard;
    }
    if (guard) runValidator(*guard, node_.shared_from_this(), name_, value);
    validated = guard;
    return false;
  }

  // The caller holds the writer, as of all that follows.
  bool storeAndShow(const Found& found, const boost::any& value) {
    Key& key = *found.key;
    // Setting the same value again is no change; but others may have stored another one meanwhile.
    if (sameValue(key.value(level_), value) && store().isCurrent()) return true;
    boost::any copy = ownCopy(value);
    if (store().keepsChanges()) {
      Changes changes;
      if (key.kind() == boostany::kNoValue) {
        changes.push_back(FixKind{found.path, kindOfValue(value)});
      }
      changes.push_back(PutValue{found.path, value});
      if (!apply(changes, found, &value)) return false;
    }
    if (!sameValue(key.value(level_), value)) show(key, copy);
    return true;
  }

  bool tryUnsetting() {
    const TellOfOthers telling(tree_);
    WriterLock writer(tree_.writer());
    const Found found = find(nullptr);
    if (found.key->value(level_).empty()) {
      ReadLock lock(tree_.lock());
      throw Failure<ValueNotDefinedForGivenLevel>(found.key->path(), levelName(level_));
    }
    if (store().keepsChanges() && !apply({EraseValue{found.path}}, found, nullptr)) return false;
    boost::any nothing;
    show(*found.key, nothing);
    return true;
  }

  // False when what others have changed leaves not all as it was found.
  bool apply(const Changes& changes, const Found& found, const boost::any* value) {
    return store().apply(changes, [&](const ForeignChanges& foreign) {
      bringIn(tree_, level_, foreign);
      return isStill(found, value);
    });
  }

  bool isStill(const Found& found, const boost::any* value) const {
    ReadLock lock(tree_.lock());
    // Should another key have taken the place of the one that was found, and its address, then it
    // is that one which is checked here.
    if (node_.child(name_) != found.key || !found.key->isAttached()) return false;
    if (!value) return !found.key->value(level_).empty();
    const int kind = found.key->kind();
    return found.key->guard() == found.guard &&
           (kind == boostany::kNoValue || kind == kindOfValue(*value));
  }

  // Puts `value` in its place and keeps what was there until the locks are gone.
  void show(Key& key, boost::any& value) {
    replaced_.swap(value);
    WriteLock lock(tree_.lock());
    key.swapValue(level_, replaced_);
    changed_.add(key);
  }

  Store& store() const { return tree_.store(level_); }

  Node& node_;
  Tree& tree_;
  const std::string& name_;
  const int level_;
  boost::any replaced_;
  ChangedKeys changed_;
};

}  // namespace

void setValue(Node& node, const std::string& name, const boost::any& given,
              const std::string& level) {
  boost::any place;
  const boost::any& value = withNarrowTexts(given, name, place);
  node.tree().look();
  if (const KeyPtr key = waitingKey(node, name)) return addWithValue(node, key, value, level);
  ValueChange(node, name, level).set(value);
}

void unsetValue(Node& node, const std::string& name, const std::string& level) {
  node.tree().look();
  ValueChange(node, name, level).unset();
}

}  // namespace zlutil::settings::host
