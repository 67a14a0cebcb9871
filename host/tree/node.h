// A node: an inner entry with children, found by name without allocating and listed in name order.
#pragma once

#include "host/tree/child_table.h"
#include "host/tree/key.h"

namespace zlutil::settings::host {

class Node final : public Entry {
 public:
  Node(TreePtr tree, std::string name, bool mayHaveListeners, ValidatorPtr validator)
      : Entry(std::move(tree), std::move(name), false, mayHaveListeners, std::move(validator)) {}
  ~Node() override;

  boost::any getValue(const std::string& key, const std::string& level) const override;
  void unset(const std::string& key, const std::string& level) override;
  bool isSet(const std::string& key, const std::string& level) const override;
  boost::optional<int> getKeyType(const std::string& key) const override;
  boost::shared_ptr<Settings> getChild(const std::string& name) const override;
  std::vector<boost::shared_ptr<Settings>> getChildren() const override;
  boost::shared_ptr<Settings> findDescendant(const std::vector<std::string>& names) const override;
  void copySubtree(const boost::shared_ptr<Settings>& source, const std::string& name) override;
  void removeNode(const std::string& name) override;
  void removeKey(const std::string& name) override;
  void setAny(const std::string& key, const boost::any& value, const std::string& level) override;

  // The following read what the tree guards.

  // Null when there is none.
  Entry* child(std::string_view name) const;
  // The child key; throws NoSuchKey or NotAKeyName.
  Key& requireKey(const std::string& name) const;
  // The entry at the path below this node, in the service's notation; null when there is none.
  Entry* atPath(std::string_view path) const;
  // How many times entries have left any tree. As long as it is the same, what was found below a
  // root is still there. Grows under the lock() of the tree concerned.
  static std::uint64_t removals();
  bool hasChildren() const { return !children_.empty(); }
  // The children in name order.
  const std::vector<EntryPtr>& childrenByName() const { return children_.byName(); }

  // The following change what the tree guards.

  // Makes room for one more child, so that adding it cannot fail for want of memory.
  void makeRoomForChild() { children_.makeRoom(); }
  // Adds a child; false, and nothing added, when the name is taken.
  bool insertChild(const EntryPtr& child);
  // The same for a node that is being built: the children are in order once sortChildren() is done.
  bool appendChild(const EntryPtr& child);
  void sortChildren() { children_.sort(); }
  // Takes the child out and gives it to the caller, who must not let go of it under the lock.
  EntryPtr takeChild(std::string_view name);
  // Takes all children out.
  std::vector<EntryPtr> takeChildren();
  void moveToTree(const TreePtr& tree) override;

 private:
  // What `read` makes of the child key, under the lock; throws NoSuchKey or NotAKeyName.
  template <class Read>
  auto readKey(const std::string& name, const Read& read) const;

  ChildTable children_;  // guarded by the tree
};

using NodePtr = boost::shared_ptr<Node>;

}  // namespace zlutil::settings::host
