// A key: a leaf that holds at most one value per level, all of one kind.
#pragma once

#include <array>

#include "host/tree/entry.h"

namespace zlutil::settings::host {

class Key final : public Entry {
 public:
  // `kind` is the declared kind, or kNoValue when the first value decides it.
  Key(TreePtr tree, std::string name, int kind, bool mayHaveListeners, ValidatorPtr validator)
      : Entry(std::move(tree), std::move(name), true, mayHaveListeners, std::move(validator)),
        kind_(static_cast<std::int8_t>(kind)) {}

  // A key has no children, so each of these says that there is none of that name.
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

  // The following read what the tree guards. A change needs the tree's writer() too, so a writer
  // may read them without the tree's lock().

  int kind() const { return kind_; }
  // Empty when the level has none.
  const boost::any& value(int level) const { return values_[level]; }
  // The first level's that has one.
  const boost::any& valueInEffect() const;

  // The following change what the tree guards.

  // Exchanges the value of the level with `value`, and counts the change; the first value fixes the
  // kind.
  void replaceValue(int level, boost::any& value);
  void setKind(int kind) { kind_ = static_cast<std::int8_t>(kind); }

  // A place for the running commit to note where it met this key; what it says between commits
  // means nothing. Only under the tree's writer().
  std::uint32_t& commitMark() { return commitMark_; }

 private:
  // In this order the small fields fill what the base class leaves of its last word.
  std::int8_t kind_;
  std::uint32_t commitMark_ = 0;
  std::array<boost::any, kLevelCount> values_;
};

using KeyPtr = boost::shared_ptr<Key>;

}  // namespace zlutil::settings::host
