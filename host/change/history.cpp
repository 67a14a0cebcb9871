// The history of a tree's user level as the service shows it.
#include "service/history.h"

#include <algorithm>
#include <optional>

#include "host/change/archive.h"
#include "host/change/commit_comment.h"
#include "host/change/undo.h"

namespace zlutil::settings {
namespace {

using namespace host;

HistoryChange changeFrom(const PastChange& past) {
  HistoryChange change;
  change.path = past.path;
  const auto take = [&](const std::optional<Change>& side, HistoryChange::What ofEntry,
                        boost::any& value) {
    if (!side) return;
    if (const auto* const put = std::get_if<PutValue>(&*side)) {
      value = put->value;
    } else {
      change.what = ofEntry;
    }
  };
  take(past.before, HistoryChange::kRemoved, change.before);
  take(past.after, HistoryChange::kAdded, change.after);
  return change;
}

HistoryCommit commitFrom(const PastCommit& past) {
  HistoryCommit commit;
  commit.number = past.number;
  commit.time = std::chrono::system_clock::time_point(std::chrono::microseconds(past.time));
  commit.process = past.process;
  commit.program = base::displayFromNarrow(past.program);
  commit.comment = base::displayFromNarrow(past.comment);
  std::transform(past.changes.begin(), past.changes.end(), std::back_inserter(commit.changes),
                 changeFrom);
  return commit;
}

}  // namespace

std::vector<HistoryCommit> historyOf(const boost::shared_ptr<Settings>& given,
                                     const std::string& path) {
  const NodePtr root = rootOf(given);
  StoreArchive* const archive = archiveOf(root);
  std::vector<HistoryCommit> history;
  if (!archive) return history;
  const auto isAsked = [&](const PastChange& change) {
    return change.path == path || change.path.rfind(path + '.', 0) == 0;
  };
  for (const PastCommit& past : archive->commitsFrom(0)) {
    const auto& changes = past.changes;
    if (path.empty() || std::any_of(changes.begin(), changes.end(), isAsked)) {
      history.push_back(commitFrom(past));
    }
  }
  return history;
}

SettingsProblems undoCommit(const boost::shared_ptr<Settings>& given, std::int64_t number,
                            bool isForced) {
  const NodePtr root = rootOf(given);
  StoreArchive* const archive = archiveOf(root);
  if (!archive) return {{"", "the user level of this tree has no history"}};
  std::optional<CommitComment> comment;
  if (commitComment().empty()) comment.emplace("undo of commit " + std::to_string(number));
  root->tree().look();
  return undo(*root, *archive, number, isForced);
}

}  // namespace zlutil::settings
