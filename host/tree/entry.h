// The base class of nodes and keys. An entry is shared by its parent node and by callers that hold
// it; it borrows its parent.
//
// Fields are constant after construction unless they say otherwise. "Guarded by the tree" means the
// tree's lock(). A thread that builds entries which no other thread knows needs no lock.
#pragma once

#include <array>
#include <boost/intrusive/unordered_set_hook.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "host/tree/definition.h"
#include "host/tree/tree.h"
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
  // `validator` is one that comes with the user level.
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
  // Returns the level's part of the definition; may be null.
  DefinitionPtr definition(int level) const;
  // The entry's own validator, which the lowest level that has one supplies; may be null.
  ValidatorPtr validator() const;
  // The first level whose values count: those above it are locked, here or at a node above.
  int firstLevel() const { return standing_ >> kFirstLevelShift; }
  // Returns the lock that the lowest level with one has set on this entry itself, and its level, or
  // null and kSession.
  std::pair<const Lock*, int> lock() const;
  // Returns the nearest entry, upwards from this one, whose lock counts here; null if there is
  // none.
  const Entry* locked() const;
  // The entry's own validator, or else that of the nearest node above that has one; may be null.
  ValidatorPtr effectiveValidator() const;

  // The caller of the following holds the tree's lock() for writing.

  void setDefinedAt(int level) { standing_ |= static_cast<std::uint8_t>(1u << level); }
  void clearDefinedAt(int level) { standing_ &= static_cast<std::uint8_t>(~(1u << level)); }
  void setParent(Node* parent) { parent_ = parent; }
  void setRemoved() { standing_ |= kRemoved; }
  // Replaces the level's part of the definition. If the lock is another one, findFirstLevels()
  // (subtree.h) must follow.
  void setDefinition(int level, DefinitionPtr definition);
  void setFirstLevel(int level) {
    const int rest = standing_ & ((1 << kFirstLevelShift) - 1);
    standing_ = static_cast<std::uint8_t>(level << kFirstLevelShift | rest);
  }
  // Moves this entry, with all entries below it, to another tree. No other thread knows the entry.
  virtual void moveToTree(const TreePtr& tree) { tree_ = tree; }

 private:
  static constexpr std::uint8_t kRemoved = 1u << kLevelCount;
  static constexpr int kFirstLevelShift = kLevelCount + 1;
  static_assert(kLevelCount << kFirstLevelShift <= 256, "standing_ holds a level beside the bits");

  using Definitions = std::array<DefinitionPtr, kLevelCount>;

  const ValidatorPtr* findValidator() const;

  TreePtr tree_;            // changes only before the entry is inserted
  Node* parent_ = nullptr;  // guarded by the tree
  const exchange::IDType id_;
  const std::string name_;
  std::unique_ptr<Definitions> definitions_;  // null if every part is; guarded by the tree
  const bool isKey_;
  const bool mayHaveListeners_;
  // A bit for each level whose store has defined the entry, kRemoved, and the first level that
  // counts; guarded by the tree.
  std::uint8_t standing_ = 0;
};

using EntryPtr = boost::shared_ptr<Entry>;

}  // namespace zlutil::settings::host
