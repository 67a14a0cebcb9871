// The children of one node: a hash table, whose links are members of the entries, and a vector in
// name order. Compared with a container that allocates for each entry this saves about 50 bytes a
// key and much of the time of loading a file. Guarded by the lock() of the node's tree.
#pragma once

#include <algorithm>
#include <boost/intrusive/unordered_set.hpp>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "host/tree/entry.h"

namespace zlutil::settings::host {

class ChildTable {
 public:
  ChildTable() : index_(Index::bucket_traits(&single_, 1)) {}
  ChildTable(const ChildTable&) = delete;
  ChildTable& operator=(const ChildTable&) = delete;

  bool empty() const { return byName_.empty(); }

  // Returns null if there is none.
  Entry* find(std::string_view name) const {
    const auto found = index_.find(name, std::hash<std::string_view>(), std::equal_to<>());
    return found == index_.end() ? nullptr : const_cast<Entry*>(&*found);
  }

  // Allocates memory for further children: so many calls of insert() or append() cannot fail.
  void makeRoom(std::size_t count) {
    const std::size_t size = byName_.size() + count;
    if (size > byName_.capacity()) byName_.reserve(std::max(size, 2 * byName_.size()));
    while (size > index_.bucket_count()) grow();
  }

  // Adds a child. Returns false, with nothing added, if the name is taken.
  bool insert(const EntryPtr& child) {
    if (!enter(child)) return false;
    byName_.insert(position(child->name()), child);
    return true;
  }

  // Adds a child at the end of the vector; sort() must follow. Returns false if the name is taken.
  bool append(const EntryPtr& child) {
    if (!enter(child)) return false;
    byName_.push_back(child);
    return true;
  }
  void sort() {
    byName_.shrink_to_fit();
    if (!std::is_sorted(byName_.begin(), byName_.end(), isBefore)) {
      std::sort(byName_.begin(), byName_.end(), isBefore);
    }
  }

  // Removes the child and returns it, or null if there is none.
  EntryPtr take(std::string_view name) {
    Entry* const found = find(name);
    if (!found) return {};
    index_.erase(index_.iterator_to(*found));
    const auto at = position(name);
    EntryPtr child = std::move(*at);
    byName_.erase(at);
    return child;
  }

  // Removes all children and returns them in name order.
  std::vector<EntryPtr> takeAll() {
    index_.clear();
    return std::exchange(byName_, {});
  }

  const std::vector<EntryPtr>& byName() const { return byName_; }

 private:
  struct NameOf {
    using type = std::string_view;
    std::string_view operator()(const Entry& entry) const { return entry.name(); }
  };
  using Index = boost::intrusive::unordered_set<Entry, boost::intrusive::key_of_value<NameOf>,
                                                boost::intrusive::hash<std::hash<std::string_view>>,
                                                boost::intrusive::equal<std::equal_to<>>,
                                                boost::intrusive::power_2_buckets<true>>;

  static bool isBefore(const EntryPtr& left, const EntryPtr& right) {
    return left->name() < right->name();
  }

  std::vector<EntryPtr>::iterator position(std::string_view name) {
    if (!byName_.empty() && byName_.back()->name() < name) return byName_.end();
    return std::lower_bound(
        byName_.begin(), byName_.end(), name,
        [](const EntryPtr& entry, std::string_view key) { return entry->name() < key; });
  }

  bool enter(const EntryPtr& child) {
    // Allocates first: the index only borrows the child, so nothing may fail afterwards.
    makeRoom(1);
    return index_.insert(*child).second;
  }

  void grow() {
    const std::size_t count = 2 * index_.bucket_count();
    auto buckets = std::make_unique<Index::bucket_type[]>(count);
    index_.rehash(Index::bucket_traits(buckets.get(), count));
    buckets_ = std::move(buckets);
  }

  std::vector<EntryPtr> byName_;
  Index::bucket_type single_;  // the buckets of a table that has not grown yet
  std::unique_ptr<Index::bucket_type[]> buckets_;
  Index index_;
};

}  // namespace zlutil::settings::host
