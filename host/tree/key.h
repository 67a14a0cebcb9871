// A key: a leaf that holds at most one value per level, all of one kind.
#pragma once

#include <array>

#include "host/tree/entry.h"

namespace zlutil::settings::host {

class Key final : public Entry {
 public:
  // `kind` is the declared kind, or kNoValue if the first value is to fix it.
  Key(TreePtr tree, std::string name, int kind, bool mayHaveListeners, ValidatorPtr validator)
      : Entry(std::move(tree), std::move(name), true, mayHaveListeners, std::move(validator)),
        kind_(static_cast<std::int8_t>(kind)) {}

  // A key has no children: these throw NoSuchKey, NoSuchNode or ErrorAddingChildNodeOrKey, or
  // return nothing.
  boost::any getValue(const std::string& key, const std::string& level) const override;
  void unset(const std::string& key, const std::string& level) override;
  bool isSet(const std::string& key, const std::string& level) const override;
  boost::optional<int> getKeyType(const std::string& key) const override;
  boost::shared_ptr<Settings> getChild(const std::string&) const override { return {}; }
  std::vector<boost::shared_ptr<Settings>> getChildren() const override { return {}; }
  boost::shared_ptr<Settings> findDescendant(const std::vector<std::string>& names) const override;
  void copySubtree(const boost::shared_ptr<Settings>& source, const std::string& name) override;
  void removeNode(const std::string& name) override;
  void removeKey(const std::string& name) override;
  void setAny(const std::string& key, const boost::any& value, const std::string& level) override;

  // The caller of the following holds the tree's lock() or writer().

  int kind() const { return kind_; }
  // Empty if the level has none.
  const boost::any& value(int level) const { return values_[level]; }
  // The value of the first level that counts and has one; empty if none has.
  const boost::any& effectiveValue() const;

  // The caller of the following holds the tree's lock() for writing.

  // Exchanges the value of the level with `value`, and counts the change. The first value fixes the
  // kind.
  void replaceValue(int level, boost::any& value);
  // Returns the value of the level if it is of the type, else null. The caller counts its change.
  template <class Type>
  Type* storedValue(int level) {
    return boost::any_cast<Type>(&values_[level]);
  }
  void countChange() const;
  void setKind(int kind) { kind_ = static_cast<std::int8_t>(kind); }

  // The index of the key in the running commit; meaningless between commits. The caller holds
  // writer().
  std::uint32_t& commitMark() { return commitMark_; }

 private:
  // In this order the small fields fill the padding of the base class.
  std::int8_t kind_;
  std::uint32_t commitMark_ = 0;
  std::array<boost::any, kLevelCount> values_;
};

using KeyPtr = boost::shared_ptr<Key>;

}  // namespace zlutil::settings::host
