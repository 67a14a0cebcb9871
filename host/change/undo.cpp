#include "host/change/undo.h"

#include <boost/make_shared.hpp>
#include <map>
#include <optional>
#include <set>

#include "host/change/external_changes.h"
#include "host/change/structure.h"
#include "host/tree/locks.h"
#include "service/failures.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

constexpr char kNoCommit[] = "the history has no commit of this number";
constexpr char kNothing[] = "the commit has changed nothing that can be changed back";
constexpr char kSeveral[] =
    "the commit has changed entries in several places, as a restored backup does. Restore the copy "
    "that was kept then";

std::string parentOf(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string::npos ? std::string() : path.substr(0, dot);
}
std::string nameOf(const std::string& path) { return path.substr(path.rfind('.') + 1); }

// A commit as one change of the tree: values, or a subtree that was added or removed.
struct CommitToUndo {
  // Of each value in it, by path: what it was and what the commit has made of it.
  std::map<std::string, std::pair<boost::any, boost::any>> values;
  std::map<std::string, DefineEntry> added, removed;

  explicit CommitToUndo(const PastCommit& commit) {
    for (const PastChange& change : commit.changes) note(change);
  }

  // Returns the topmost of the added or removed entries; empty if there are several or none, or if
  // a value is not below it.
  std::string top() const {
    if (!added.empty() && !removed.empty()) return {};
    const auto& entries = added.empty() ? removed : added;
    std::string top;
    for (const auto& [path, entry] : entries) {
      if (entries.count(parentOf(path)) > 0) continue;
      if (!top.empty()) return {};
      top = path;
    }
    for (const auto& [path, value] : values) {
      if (entries.count(path) == 0) return {};
    }
    return top;
  }

  std::set<std::string> paths() const {
    std::set<std::string> all;
    for (const auto& value : values) all.insert(value.first);
    for (const auto& entry : added) all.insert(entry.first);
    for (const auto& entry : removed) all.insert(entry.first);
    return all;
  }

 private:
  void note(const PastChange& change) {
    const auto valueOf = [](const std::optional<Change>& side) {
      const auto* const put = side ? std::get_if<PutValue>(&*side) : nullptr;
      return put ? put->value : boost::any();
    };
    const auto entryOf = [](const std::optional<Change>& side) {
      return side ? std::get_if<DefineEntry>(&*side) : nullptr;
    };
    if (const DefineEntry* const entry = entryOf(change.before)) {
      removed.emplace(change.path, *entry);
    } else if (const DefineEntry* const newEntry = entryOf(change.after)) {
      added.emplace(change.path, *newEntry);
    } else {
      const boost::any before = valueOf(change.before), after = valueOf(change.after);
      values.emplace(change.path, std::make_pair(before, before)).first->second.second = after;
    }
  }
};

// Returns which of the paths the changes of a later commit concern: the path itself, one above it
// or one below it.
std::set<std::string> concernedBy(const PastCommit& later, const std::set<std::string>& paths) {
  std::set<std::string> concerned;
  for (const PastChange& change : later.changes) {
    for (std::string path = change.path; !path.empty(); path = parentOf(path)) {
      if (paths.count(path) > 0) concerned.insert(path);
    }
    const std::string below = change.path + '.';
    for (auto path = paths.lower_bound(below);
         path != paths.end() && path->compare(0, below.size(), below) == 0; ++path) {
      concerned.insert(*path);
    }
  }
  return concerned;
}

SettingsProblems conflictsOf(const std::vector<PastCommit>& commits,
                             const std::set<std::string>& paths) {
  std::map<std::string, std::string> conflicts;
  for (std::size_t at = 1; at < commits.size(); ++at) {
    const PastCommit& later = commits[at];
    for (const std::string& path : concernedBy(later, paths)) {
      conflicts[path] = "commit " + std::to_string(later.number) + " by \"" + later.program +
                        "\" has changed it since";
    }
  }
  return {conflicts.begin(), conflicts.end()};
}

// One undoing. Each attempt holds an edit of the tree while it looks for conflicts and changes the
// tree, and is repeated if another process changes the level in between.
class Undoing {
 public:
  Undoing(Tree& tree, Node& root, StoreArchive& archive, std::int64_t number, bool isForced)
      : tree_(tree), root_(root), archive_(archive), number_(number), isForced_(isForced) {}

  SettingsProblems run() {
    std::optional<SettingsProblems> result;
    while (!result) {
      {
        TreeEdit edit(tree_);
        edit.catchUp(kUser);
        result = attempt(edit);
        if (result && result->empty()) edit.finish();
      }
      if (!result) result = runValidators();
    }
    return *result;
  }

 private:
  using Result = std::optional<SettingsProblems>;  // nothing: try again

  struct Target {
    KeyPtr key;
    NodePtr node;
    std::string path;
    boost::any before;
    ValidatorPtr validator;
  };

  static Result refusal(const std::string& path, const std::string& reason) {
    return SettingsProblems{{path, reason}};
  }

  Result attempt(TreeEdit& edit) {
    const std::vector<PastCommit> commits = archive_.commitsFrom(number_);
    if (commits.empty() || commits.front().number != number_) return refusal("", kNoCommit);
    const CommitToUndo commit(commits.front());
    if (!isForced_) {
      SettingsProblems conflicts = conflictsOf(commits, commit.paths());
      if (!conflicts.empty()) return conflicts;
    }
    if (commit.added.empty() && commit.removed.empty()) return undoValues(edit, commit);
    const std::string top = commit.top();
    if (top.empty()) return refusal("", kSeveral);
    const std::string above = parentOf(top);
    Entry* const parent = above.empty() ? &root_ : root_.atPath(above);
    if (!parent || parent->isKey()) return refusal(top, "the node above it has been removed");
    Node& node = static_cast<Node&>(*parent);
    const bool isDone = commit.added.empty()
                            ? tryInserting(edit, node, rebuilt(commit, top))
                            : tryRemoving(edit, node, nameOf(top), commit.added.at(top).isKey,
                                          [] { return false; });
    return isDone ? Result(SettingsProblems()) : std::nullopt;
  }

  Result undoValues(TreeEdit& edit, const CommitToUndo& commit) {
    if (commit.values.empty()) return refusal("", kNothing);
    std::vector<Target> targets;
    SettingsProblems problems = findTargets(commit, targets);
    if (!problems.empty()) return problems;
    targets_.swap(targets);
    if (!isJudged()) return std::nullopt;
    KeyChanges changes;
    for (const Target& target : targets_) changes.push_back({target.key.get(), target.before});
    const auto describe = [&] { return describeTargets(); };
    if (!edit.store(kUser, describe, [] { return false; })) return std::nullopt;
    edit.replaceValues(kUser, std::move(changes));
    return SettingsProblems();
  }

  SettingsProblems findTargets(const CommitToUndo& commit, std::vector<Target>& targets) const {
    SettingsProblems problems;
    ReadLock lock(tree_.lock());
    for (const auto& [path, sides] : commit.values) {
      Entry* const entry = root_.atPath(path);
      if (!entry || !entry->isKey()) {
        problems.emplace_back(path, "the key has been removed");
        continue;
      }
      const auto key = boost::static_pointer_cast<Key>(entry->shared_from_this());
      const auto& [before, after] = sides;
      if (!before.empty() && key->kind() != boostany::kindOfValue(before)) {
        problems.emplace_back(path, "the key is of another type now");
      } else if (std::string reason = whyNotWritable(*key, kUser); !reason.empty()) {
        problems.emplace_back(path, std::move(reason));
      } else if (!isForced_ && !boostany::sameValue(key->value(kUser), after)) {
        problems.emplace_back(path, "it has another value now");
      } else {
        const auto node = boost::static_pointer_cast<Node>(entry->parent()->shared_from_this());
        targets.push_back({key, node, path, before, key->effectiveValidator()});
      }
    }
    return problems;
  }

  Changes describeTargets() const {
    Changes changes;
    for (const Target& target : targets_) {
      if (target.before.empty()) {
        changes.push_back(EraseValue{target.path, target.key->kind()});
      } else {
        changes.push_back(PutValue{target.path, target.before});
      }
    }
    return changes;
  }

  // Returns whether the validators of the targets are those that have run.
  bool isJudged() const {
    std::vector<ValidatorPtr> present;
    for (const Target& target : targets_) present.push_back(target.validator);
    return present == judges_;
  }

  // Runs the validators of the targets on the values that come back. Holds no lock. Returns the
  // problems, or nothing if there are none.
  Result runValidators() {
    judges_.clear();
    SettingsProblems problems;
    for (const Target& target : targets_) {
      judges_.push_back(target.validator);
      if (!target.validator || target.before.empty()) continue;
      try {
        runValidator(*target.validator, target.node, target.key->name(), target.before);
      } catch (const std::exception& refused) {
        problems.emplace_back(target.path, refused.what());
      }
    }
    return problems.empty() ? std::nullopt : Result(problems);
  }

  // Returns the removed entry at `top` with all that was below it, in no tree yet.
  static EntryPtr rebuilt(const CommitToUndo& commit, const std::string& top) {
    const std::size_t cut = top.size() - nameOf(top).size();
    ExternalChanges contents{{}, false, "the history"};
    for (const auto& [path, entry] : commit.removed) {
      contents.changes.push_back(
          DefineEntry{path.substr(cut), entry.isKey, entry.kind, entry.validator});
    }
    for (const auto& [path, sides] : commit.values) {
      if (!sides.first.empty()) contents.changes.push_back(PutValue{path.substr(cut), sides.first});
    }
    const TreePtr tree = Tree::makeStandalone();
    const auto holder = boost::make_shared<Node>(tree, "removed", true, ValidatorPtr());
    applyExternalChanges(*holder, kUser, contents);
    WriteLock lock(tree->lock());
    return holder->takeChild(nameOf(top));
  }

  Tree& tree_;
  Node& root_;
  StoreArchive& archive_;
  const std::int64_t number_;
  const bool isForced_;
  std::vector<Target> targets_;       // of the last attempt
  std::vector<ValidatorPtr> judges_;  // those that have accepted the targets
};

}  // namespace

SettingsProblems undo(Node& root, StoreArchive& archive, std::int64_t number, bool isForced) {
  try {
    return Undoing(root.tree(), root, archive, number, isForced).run();
  } catch (const Failure<StoreFailure>&) {
    throw;
  } catch (const IMsgIDException& refused) {
    return {{"", refused.GetMessageTxt()}};
  }
}

}  // namespace zlutil::settings::host
