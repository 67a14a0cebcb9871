// The history of the user level: what each commit has changed, when and by which program, and
// undoing one. An option of the service beside the contract: a host may leave it out. Any thread.
//
// A commit is one change of the stored user level: a set, an unset, a transaction, an added or
// removed entry with all below it. Values at other levels have no history here.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "base/export.h"
#include "service/settings.h"

namespace zlutil {
namespace settings {

// One change of a commit. Texts are standard UTF-8 but for those in the values, which are narrow.
struct HistoryChange {
  enum What { kValue, kAdded, kRemoved };

  std::string path;  // seen from the root
  What what = kValue;
  boost::any before, after;  // of a value; empty if there was none
};

struct HistoryCommit {
  std::int64_t number = 0;  // grows from commit to commit
  std::chrono::system_clock::time_point time;
  std::int64_t process = 0;
  std::string program, comment;
  std::vector<HistoryChange> changes;  // in their order
};

// Returns the commits that have changed the entry at `path` or one below it, oldest first; all
// commits for an empty path. A commit has all its changes. Returns none for a tree whose user level
// is not stored. Throws StoreFailure.
SETTINGS_HOST_OPTION std::vector<HistoryCommit> historyOf(const boost::shared_ptr<Settings>& root,
                                                          const std::string& path = "");

// Changes back what the commit of that number has changed, as one change of the tree: it is checked
// by validators, stored, published and recorded like every other. Returns why that is not possible
// as (path, reason) pairs; nothing if it is done. Refuses a commit whose entries a later commit has
// changed, unless `isForced`. Leaves a type that the commit has fixed. Throws StoreFailure.
SETTINGS_HOST_OPTION SettingsProblems undoCommit(const boost::shared_ptr<Settings>& root,
                                                 std::int64_t number, bool isForced = false);

// A scope whose commits by this thread get a comment. The innermost one counts.
class SETTINGS_HOST_API CommitComment {
 public:
  // Takes standard UTF-8 or narrow text; throws ValidationFailure for anything else.
  SETTINGS_HOST_OPTION explicit CommitComment(const std::string& comment);
  SETTINGS_HOST_OPTION ~CommitComment();
  CommitComment(const CommitComment&) = delete;
  CommitComment& operator=(const CommitComment&) = delete;

 private:
  const std::string comment_;  // narrow text
  const std::string* const outer_;
};

}  // namespace settings
}  // namespace zlutil
