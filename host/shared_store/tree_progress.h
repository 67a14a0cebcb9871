// How far a tree has followed a level on a cluster: it has all keys up to one revision, and later
// content of some: its own commits, and what conflicts have shown. Without this memory an event
// that the watch brings afterwards would change such a key back. One thread at a time.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/tree/store.h"

namespace zlutil::settings::host {

class TreeProgress {
 public:
  // The content of one key, as changes of a tree.
  struct Item {
    std::string path;
    std::int64_t revision;
    Changes changes;
  };

  // Returns the revision up to which the tree has all keys.
  std::int64_t seen() const { return seen_; }
  // Returns the last revision of the key that the tree has.
  std::int64_t revisionOf(const std::string& path) const;
  // Returns the paths below the path that the tree has later content of, in their order.
  std::set<std::string> laterBelow(const std::string& path) const;

  // Returns the changes that bring a tree to the whole content of a revision, with the later keys
  // that it has. Forgets these if the revision is lower than what the tree has seen: a restored
  // cluster has lower revisions.
  Changes changesOfContent(std::vector<Item> content, std::int64_t revision);
  // Returns the changes of the events, without those that the tree has already.
  Changes changesOfEvents(std::vector<Item> events) const;

  // The tree has all keys up to the revision.
  void advance(std::int64_t revision);
  // The tree has this later content of a key. Returns the changes of the item.
  const Changes& addLater(Item item);
  // The tree has lost the entry and all below it at this later revision.
  void addRemoval(const std::string& path, std::int64_t revision);

 private:
  bool hasLaterBelow(const std::string& path, std::int64_t revision) const;
  bool wasRemovedAfter(const std::string& path, std::int64_t revision) const;

  std::int64_t seen_ = 0;
  std::unordered_map<std::string, Item> later_;            // by path
  std::unordered_map<std::string, std::int64_t> removed_;  // the revisions, by path
};

}  // namespace zlutil::settings::host
