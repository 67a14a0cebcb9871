// A node: an inner entry with children, found by name without allocating and listed in name order.
#pragma once

#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/ordered_index.hpp>
#include <boost/multi_index_container.hpp>
#include <functional>

#include "host/settings/key.h"

namespace zlutil::settings::host {

class Node final : public Entry {
 public:
  struct NameOf {
    using result_type = std::string_view;
    std::string_view operator()(const EntryPtr& entry) const { return entry->name(); }
  };
  using Children = boost::multi_index_container<
      EntryPtr, boost::multi_index::indexed_by<
                    boost::multi_index::hashed_unique<NameOf, std::hash<std::string_view>>,
                    boost::multi_index::ordered_unique<NameOf>>>;

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
  bool hasChildren() const { return !children_.empty(); }
  // The children in name order.
  const auto& childrenByName() const { return children_.get<1>(); }

  // The following change what the tree guards.

  // Adds a child; false, and nothing added, when the name is taken. Cheapest in name order.
  bool insertChild(const EntryPtr& child);
  // Takes the child out and gives it to the caller, who must not let go of it under the lock.
  EntryPtr takeChild(std::string_view name);
  // Takes all children out.
  Children takeChildren();
  void moveToTree(const TreePtr& tree) override;

 private:
  // What `read` makes of the child key, under the lock; throws NoSuchKey or NotAKeyName.
  template <class Read>
  auto readKey(const std::string& name, const Read& read) const;

  Children children_;  // guarded by the tree
};

using NodePtr = boost::shared_ptr<Node>;

}  // namespace zlutil::settings::host
