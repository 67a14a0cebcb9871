// A node: an entry with children, found by name without allocation and listed in name order.
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

  // The caller of the following holds the tree's lock().

  // Returns null if there is none.
  Entry* child(std::string_view name) const;
  // Returns the child key. Throws NoSuchKey or NotAKeyName.
  Key& requireKey(const std::string& name) const;
  // Returns the entry at the dotted path below this node, or null.
  Entry* atPath(std::string_view path) const;
  // The number of removals of entries from any tree. A caller that has found an entry below a root
  // may use it as long as the number is the same. Grows under the lock() of the tree concerned;
  // read without a lock.
  static std::uint64_t removals();
  bool hasChildren() const { return !children_.empty(); }
  // The children in name order.
  const std::vector<EntryPtr>& childrenByName() const { return children_.byName(); }

  // The caller of the following holds the tree's lock() for writing.

  // Allocates memory for one more child, so that adding it cannot fail.
  void makeRoomForChild() { children_.makeRoom(1); }
  void makeRoomForChildren(std::size_t count) { children_.makeRoom(count); }
  // Adds a child. Returns false, with nothing added, if the name is taken.
  bool insertChild(const EntryPtr& child);
  // The same for a node that is being built; sortChildren() must follow.
  bool appendChild(const EntryPtr& child);
  void sortChildren() { children_.sort(); }
  // Removes the child and returns it, or null. The caller must not destroy it under the lock.
  EntryPtr takeChild(std::string_view name);
  // Removes all children and returns them. The caller must not destroy them under the lock.
  std::vector<EntryPtr> takeChildren();
  void moveToTree(const TreePtr& tree) override;

 private:
  // Returns read(key) for the child key, called under the lock. Throws NoSuchKey or NotAKeyName.
  template <class Read>
  auto readKey(const std::string& name, const Read& read) const;

  ChildTable children_;  // guarded by the tree
};

using NodePtr = boost::shared_ptr<Node>;

}  // namespace zlutil::settings::host
