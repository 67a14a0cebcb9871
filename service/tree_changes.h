// Several changes of a tree as one: values at any levels, entries that are added, removed and
// moved. An option of the service beside the contract: a host may leave it out. Any thread.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <string>
#include <utility>
#include <vector>

#include "base/export.h"
#include "service/settings.h"
#include "service/validators.h"

namespace zlutil {
namespace settings {

// One of the changes. Paths have the names below the node that the changes begin at, joined with
// "." ; texts are standard UTF-8 or narrow text.
struct TreeChange {
  enum What { kSet, kUnset, kAddNode, kAddKey, kRemove, kMove };

  What what;
  std::string path;
  std::string target = {};         // kMove: the new path
  boost::any value = {};           // kSet; kAddKey, empty for a key without a value
  std::string level = {};          // kSet, kUnset, and the value of kAddKey
  ValidatorChoice validator = {};  // kAddNode, kAddKey
};

// Makes the changes below the node `top` in their order, each as it would be after those before it:
// all of them or, if there is a problem, none. Other threads and processes, and listeners, see all
// of them at once; the events come in the order removed, added, changed. With `isTrial`, only looks
// for problems. Returns these as (path, reason) pairs. Throws StoreFailure.
//
// A moved entry is a new one with the values and the validator of the old one, so listeners stay
// behind. It is moved before anything below it is changed. Changes that are stored must all be of
// one level, because two stores cannot change as one; entries are stored at the user level.
SETTINGS_HOST_OPTION SettingsProblems applyChanges(const boost::shared_ptr<Settings>& top,
                                                   const std::vector<TreeChange>& changes,
                                                   bool isTrial = false);

// A list of changes for applyChanges(). One thread at a time.
class TreeChanges {
 public:
  TreeChanges& set(std::string path, boost::any value, std::string level = "user") {
    return add({TreeChange::kSet, std::move(path), {}, std::move(value), std::move(level)});
  }
  TreeChanges& unset(std::string path, std::string level = "user") {
    return add({TreeChange::kUnset, std::move(path), {}, {}, std::move(level)});
  }
  TreeChanges& addNode(std::string path, ValidatorChoice validator = ValidatorChoice()) {
    return add({TreeChange::kAddNode, std::move(path), {}, {}, {}, std::move(validator)});
  }
  TreeChanges& addKey(std::string path, boost::any value, std::string level = "user",
                      ValidatorChoice validator = ValidatorChoice()) {
    return add({TreeChange::kAddKey,
                std::move(path),
                {},
                std::move(value),
                std::move(level),
                std::move(validator)});
  }
  TreeChanges& remove(std::string path) { return add({TreeChange::kRemove, std::move(path)}); }
  TreeChanges& move(std::string path, std::string target) {
    return add({TreeChange::kMove, std::move(path), std::move(target)});
  }

  SettingsProblems commit(const boost::shared_ptr<Settings>& top) const {
    return applyChanges(top, changes_);
  }
  SettingsProblems validate(const boost::shared_ptr<Settings>& top) const {
    return applyChanges(top, changes_, true);
  }

 private:
  TreeChanges& add(TreeChange change) {
    changes_.push_back(std::move(change));
    return *this;
  }

  std::vector<TreeChange> changes_;
};

}  // namespace settings
}  // namespace zlutil
