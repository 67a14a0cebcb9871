// The base class of nodes and keys. An entry is shared by its parent node and by callers that hold
// it; it borrows its parent.
//
// Fields are constant after construction unless they say otherwise. "Guarded by the tree" means the
// tree's lock(). A thread that builds entries which no other thread knows needs no lock.
#pragma once

#include <boost/intrusive/unordered_set_hook.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/tree/tree.h"
#include "host/tree/validation.h"
#include "service/settings.h"

namespace zlutil::settings::host {

class Node;

// The greatest number of entries on a path below a root. Bounds every recursion over a tree.
inline constexpr int kMaxDepth = 200;

// The link of an entry in its parent's table of children.
using ChildLink = boost::intrusive::unordered_set_base_hook<
    boost::intrusive::link_mode<boost::intrusive::normal_link>>;

using ValueRange = boost::iterator_range<SettingsValues::const_iterator>;

class Entry : public Settings, public boost::enable_shared_from_this<Entry>, public ChildLink {
 public:
  Entry(TreePtr tree, std::string name, bool isKey, bool mayHaveListeners, ValidatorPtr validator);

  std::string getName() const override { return name_; }
  std::string getPath() const override;
  boost::shared_ptr<Settings> getParent() const override;
  bool isKey() const final { return isKey_; }
  contextmgr::ZcrID getZcrID() const override { return tree_->context(); }
  bool canHaveListeners() const override { return mayHaveListeners_; }
  boost::shared_ptr<Settings> getSharedSelf() override { return shared_from_this(); }
  SettingsProblems setMultiple(const ValueRange& values, const std::string& level,
                               int reserved) override;
  SettingsProblems validateMultiple(const ValueRange& values, int reserved) const override;
  exchange::IDType getID() const override { return id_; }
  void attachTo(const boost::shared_ptr<Settings>& parent) override;
  bool isRoot() const override;

  const std::string& name() const { return name_; }
  Tree& tree() const { return *tree_; }
  const TreePtr& treePtr() const { return tree_; }
  const ValidatorPtr& validator() const { return validator_; }

  // The caller of the following holds the tree's lock(), at least for reading.

  // Null for a root and for a detached or removed entry.
  Node* parent() const { return parent_; }
  bool isRemoved() const { return standing_ & kRemoved; }
  // Returns false if this entry or one above it has been removed.
  bool isAttached() const;
  // The names below the topmost entry, joined with ".".
  std::string pathBelowTop() const;
  // The path in the service's notation.
  std::string path() const;
  // The number of entries above this one.
  int depth() const;
  // Returns whether the store of that level has defined the entry.
  bool isDefinedAt(int level) const { return standing_ & (1u << level); }
  // The entry's own validator, or else that of the nearest node above that has one; may be null.
  ValidatorPtr effectiveValidator() const;

  // The caller of the following holds the tree's lock() for writing.

  void setDefinedAt(int level) { standing_ |= static_cast<std::uint8_t>(1u << level); }
  void clearDefinedAt(int level) { standing_ &= static_cast<std::uint8_t>(~(1u << level)); }
  void setParent(Node* parent) { parent_ = parent; }
  void setRemoved() { standing_ |= kRemoved; }
  // The caller is building the entry.
  void setValidator(ValidatorPtr validator) { validator_ = std::move(validator); }
  // Moves this entry, with all entries below it, to another tree. No other thread knows the entry.
  virtual void moveToTree(const TreePtr& tree) { tree_ = tree; }

 private:
  static constexpr std::uint8_t kRemoved = 1u << kLevelCount;

  TreePtr tree_;            // changes only before the entry is inserted
  Node* parent_ = nullptr;  // guarded by the tree
  const exchange::IDType id_;
  const std::string name_;
  ValidatorPtr validator_;
  const bool isKey_;
  const bool mayHaveListeners_;
  // A bit for each level whose store has defined the entry, and kRemoved; guarded by the tree.
  std::uint8_t standing_ = 0;
};

using EntryPtr = boost::shared_ptr<Entry>;

}  // namespace zlutil::settings::host
