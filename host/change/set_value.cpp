// One value at a time: Node::setAny and Node::unset.
#include "host/change/given_text.h"
#include "host/change/new_key.h"
#include "host/change/tree_edit.h"
#include "host/change/value_checks.h"
#include "host/tree/subtree.h"
#include "service/failures.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

// The key that an edit is to change at a level, and all that the change depends on.
class Target {
 public:
  // Finds the key and checks that it can take the value, or, for null, that its value can go. The
  // caller holds the tree's writer(). Throws what Settings::setAny and unset throw.
  Target(Node& node, const std::string& name, int level, const boost::any* value)
      : node_(node), name_(name), level_(level), value_(value) {
    ReadLock lock(node.tree().lock());
    key_ = &node.requireKey(name);
    checkWritable(*key_, level);
    if (value) {
      checkKind(*key_, key_->kind(), *value);
      validator_ = key_->effectiveValidator();
    }
    if (!key_->isAttached()) throw Failure<NoSuchKey>(node.name(), name);
    if (!value && key_->value(level).empty()) {
      throw Failure<ValueNotDefinedForGivenLevel>(key_->path(), levelName(level));
    }
    if (store().keepsChanges()) path_ = key_->path();
  }

  Key& key() const { return *key_; }
  const ValidatorPtr& validator() const { return validator_; }
  Store& store() const { return node_.tree().store(level_); }

  // Returns false when setting the value would change nothing, here or in the store.
  bool needsChange() const {
    return !store().keepsChanges() || !boostany::sameValue(key_->value(level_), *value_) ||
           !store().isCurrent();
  }

  Changes describe() const {
    Changes changes = formerErased(*key_, level_);
    if (!value_) {
      changes.push_back(EraseValue{path_, key_->kind()});
      return changes;
    }
    if (level_ > kUser) {
      ReadLock lock(node_.tree().lock());
      describeFor(*key_, level_, changes);
    }
    if (key_->kind() == boostany::kNoValue) {
      changes.push_back(FixKind{path_, boostany::kindOfValue(*value_)});
    }
    changes.push_back(PutValue{path_, *value_});
    return changes;
  }

  // Returns whether the change is still possible, and judged by the same validator, after changes
  // by others have come into the tree.
  bool isStillPossible() const {
    ReadLock lock(node_.tree().lock());
    // If another key stands at the address of the one that was found, the checks are of that key.
    if (node_.child(name_) != key_ || !key_->isAttached()) return false;
    if (level_ < key_->firstLevel()) return false;
    if (!value_) return !key_->value(level_).empty();
    const int kind = key_->kind();
    return key_->effectiveValidator() == validator_ &&
           (kind == boostany::kNoValue || kind == boostany::kindOfValue(*value_));
  }

 private:
  const Node& node_;
  const std::string& name_;
  const int level_;
  const boost::any* const value_;
  Key* key_;
  ValidatorPtr validator_;
  std::string path_;  // if the level's store keeps changes
};

bool storeTarget(TreeEdit& edit, const Target& target, int level) {
  return edit.store(
      level, [&] { return target.describe(); }, [&] { return target.isStillPossible(); });
}

// Returns false if changes by others have come in that the target does not agree with.
bool trySetting(TreeEdit& edit, const Target& target, int level, const boost::any& value) {
  if (!target.needsChange()) return true;
  boost::any stored = boostany::ownCopy(value);
  if (!storeTarget(edit, target, level)) return false;
  edit.replaceValue(target.key(), level, std::move(stored));
  return true;
}

}  // namespace

void Node::setAny(const std::string& name, const boost::any& given, const std::string& levelText) {
  boost::any copy;
  const boost::any& value = withNarrowTexts(given, name, copy);
  tree().look();
  if (const KeyPtr key = waitingKey(*this, name)) return addWithValue(*this, key, value, levelText);
  const int level = requireLevel(levelText);
  for (ValidatorPtr judge;;) {
    ValidatorPtr validator;
    {
      TreeEdit edit(tree());
      const Target target(*this, name, level, &value);
      validator = target.validator();
      if (validator == judge && trySetting(edit, target, level, value)) return edit.finish();
    }
    if (validator && validator != judge) runValidator(*validator, shared_from_this(), name, value);
    judge = validator;
  }
}

void Node::unset(const std::string& name, const std::string& levelText) {
  tree().look();
  const int level = requireLevel(levelText);
  editTree(tree(), [&](TreeEdit& edit) {
    const Target target(*this, name, level, nullptr);
    if (!storeTarget(edit, target, level)) return false;
    edit.replaceValue(target.key(), level, boost::any());
    return true;
  });
}

}  // namespace zlutil::settings::host
