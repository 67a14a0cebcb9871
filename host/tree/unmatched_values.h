// Values of the stores that have no key of their own name and kind: values under the former name of
// a key, and values that are left out. Part of a tree, guarded by its lock().
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace zlutil::settings::host {

// The former names of keys (`replaces` in settings files), and the values that the stores have
// under them. Such a value counts as long as its level has none under the present name. All paths
// are below the tree's root.
class FormerNames {
 public:
  void add(const std::string& former, const std::string& present) { present_[former] = present; }

  // Returns the present path of a key with that former path, or null.
  const std::string* presentPath(const std::string& former) const {
    const auto found = present_.find(former);
    return found == present_.end() ? nullptr : &found->second;
  }

  // Notes that the level's store has a value under the former path, and whether it counts.
  void note(int level, const std::string& present, const std::string& former, bool counts) {
    stored_[{level, present}] = {former, counts};
  }
  void forget(int level, const std::string& present) { stored_.erase({level, present}); }
  // From now on the value under the former path does not count, if there is one.
  void supersede(int level, const std::string& present) {
    const auto found = stored_.find({level, present});
    if (found != stored_.end()) found->second.counts = false;
  }

  bool isEmpty() const { return stored_.empty(); }
  // Returns whether the value of the level was read under a former path.
  bool counts(int level, const std::string& present) const {
    const auto found = stored_.find({level, present});
    return found != stored_.end() && found->second.counts;
  }
  // Returns the former path under which the level's store has a value, or null.
  const std::string* storedUnder(int level, const std::string& present) const {
    const auto found = stored_.find({level, present});
    return found == stored_.end() ? nullptr : &found->second.path;
  }

 private:
  struct Stored {
    std::string path;
    bool counts;
  };

  std::map<std::string, std::string> present_;
  std::map<std::pair<int, std::string>, Stored> stored_;
};

// The values and entries of stores that the tree does not have, with the reasons.
class LeftOut {
 public:
  void note(int level, const std::string& path, const std::string& reason) {
    reasons_[{level, path}] = reason;
  }
  void forget(int level, const std::string& path) {
    if (!reasons_.empty()) reasons_.erase({level, path});
  }
  // Returns the reason, empty if nothing is left out there. Narrow text.
  std::string reason(int level, const std::string& path) const {
    const auto found = reasons_.find({level, path});
    return found == reasons_.end() ? std::string() : found->second;
  }

 private:
  std::map<std::pair<int, std::string>, std::string> reasons_;
};

}  // namespace zlutil::settings::host
