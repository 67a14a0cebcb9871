#include "host/shared_store/tree_progress.h"

#include <algorithm>
#include <iterator>

namespace zlutil::settings::host {
namespace {

bool isBelow(const std::string& path, const std::string& above) {
  return path.size() > above.size() && path[above.size()] == '.' &&
         path.compare(0, above.size(), above) == 0;
}

}  // namespace

std::int64_t TreeProgress::revisionOf(const std::string& path) const {
  const auto item = later_.find(path);
  return item == later_.end() ? seen_ : std::max(seen_, item->second.revision);
}

bool TreeProgress::hasLaterBelow(const std::string& path, std::int64_t revision) const {
  return std::any_of(later_.begin(), later_.end(), [&](const auto& later) {
    return later.second.revision > revision && isBelow(later.first, path);
  });
}

std::set<std::string> TreeProgress::laterBelow(const std::string& path) const {
  std::set<std::string> paths;
  for (const auto& later : later_) {
    if (isBelow(later.first, path)) paths.insert(later.first);
  }
  return paths;
}

bool TreeProgress::wasRemovedAfter(const std::string& path, std::int64_t revision) const {
  return std::any_of(removed_.begin(), removed_.end(), [&](const auto& removed) {
    return removed.second > revision && (path == removed.first || isBelow(path, removed.first));
  });
}

Changes TreeProgress::changesOfContent(std::vector<Item> content, std::int64_t revision) {
  if (revision < seen_) {
    later_.clear();
    removed_.clear();
  }
  Changes changes;
  for (Item& item : content) {
    const auto later = later_.find(item.path);
    if (later != later_.end() && later->second.revision > revision) continue;
    if (wasRemovedAfter(item.path, revision)) continue;
    std::move(item.changes.begin(), item.changes.end(), std::back_inserter(changes));
  }
  for (const auto& [path, item] : later_) {
    if (item.revision <= revision) continue;
    changes.insert(changes.end(), item.changes.begin(), item.changes.end());
  }
  return changes;
}

Changes TreeProgress::changesOfEvents(std::vector<Item> events) const {
  Changes changes;
  for (Item& item : events) {
    const auto later = later_.find(item.path);
    if (later != later_.end() && later->second.revision >= item.revision) continue;
    if (wasRemovedAfter(item.path, item.revision)) continue;
    for (Change& change : item.changes) {
      // A node that this key leaves empty may have got a key of this process meanwhile.
      auto* const removal = std::get_if<RemoveSubtree>(&change);
      if (removal && hasLaterBelow(removal->path, item.revision)) removal->path = item.path;
      changes.push_back(std::move(change));
    }
  }
  return changes;
}

void TreeProgress::advance(std::int64_t revision) {
  seen_ = revision;
  for (auto item = later_.begin(); item != later_.end();) {
    item = item->second.revision <= seen_ ? later_.erase(item) : std::next(item);
  }
  for (auto item = removed_.begin(); item != removed_.end();) {
    item = item->second <= seen_ ? removed_.erase(item) : std::next(item);
  }
}

void TreeProgress::addRemoval(const std::string& path, std::int64_t revision) {
  for (const std::string& below : laterBelow(path)) later_.erase(below);
  later_.erase(path);
  removed_[path] = revision;
}

const Changes& TreeProgress::addLater(Item item) {
  Item& later = later_[item.path];
  later = std::move(item);
  return later.changes;
}

}  // namespace zlutil::settings::host
