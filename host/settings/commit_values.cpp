// Many values as one operation: setMultiple and validateMultiple. Time is linear in the number of
// values: each phase passes over them once, and one acquisition of a lock serves a whole pass.
#include <map>
#include <stdexcept>
#include <unordered_map>

#include "host/settings/commit.h"
#include "host/settings/publication.h"
#include "host/settings/stored_value.h"
#include "host/settings/value_checks.h"
#include "service/failures.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

// Problems found so far, by the position of their value.
using ProblemsAt = std::map<std::size_t, std::pair<std::string, std::string>>;

SettingsProblems inOrder(const ProblemsAt& problems) {
  SettingsProblems list;
  list.reserve(problems.size());
  for (const auto& problem : problems) list.push_back(problem.second);
  return list;
}

// Runs `check`; what it throws becomes the problem at that position.
template <class Check>
void collect(ProblemsAt& problems, std::size_t position, const Settings& entry,
             const Check& check) {
  std::string reason;
  try {
    check();
    return;
  } catch (const std::exception& failure) {
    reason = failure.what();
  } catch (const IUserException& failure) {
    reason = failure.GetMessageTxt();
  } catch (...) {
    reason = "unknown failure";
  }
  problems.emplace(position, std::make_pair(entry.getPath(), reason));
}

// One value on its way into its key. Borrows both from the caller's range.
struct Candidate {
  Key* key;  // null when the value's entry is no key of this tree
  const boost::any* value;
  ValidatorPtr guard;
  NodePtr node;
};

// The candidates of a range, and the problems that they have already.
class Candidates {
 public:
  Candidates(Tree& tree, const ValueRange& values) : tree_(tree) {
    candidates_.reserve(values.size());
    for (const auto& value : values) {
      candidates_.push_back(
          {dynamic_cast<Key*>(value.first.get()), &value.second, ValidatorPtr(), NodePtr()});
    }
    checkThatKeysBelongHere(values);
  }

  // Checks kinds and attachment, then runs the validators; `level` is where the values are to go,
  // or nothing.
  void check(std::optional<int> level) {
    for (const std::size_t position : look(level)) explain(position, level);
    for (std::size_t position = 0; position < candidates_.size(); ++position) {
      const Candidate& candidate = candidates_[position];
      if (!candidate.guard || problems_.count(position)) continue;
      collect(problems_, position, *candidate.key, [&] {
        runValidator(*candidate.guard, candidate.node, candidate.key->name(), *candidate.value);
      });
    }
  }

  std::vector<Candidate>& list() { return candidates_; }
  ProblemsAt& problems() { return problems_; }

 private:
  void checkThatKeysBelongHere(const ValueRange& values) {
    for (std::size_t position = 0; position < candidates_.size(); ++position) {
      const Settings* const entry = values[position].first.get();
      Key*& key = candidates_[position].key;
      if (key && &key->tree() == &tree_) continue;
      key = nullptr;
      problems_.emplace(
          position, std::make_pair(entry ? entry->getPath() : std::string(),
                                   std::string(!entry            ? "There is no such entry."
                                               : !entry->isKey() ? "A node holds no value."
                                                                 : "The key is in another tree.")));
    }
  }

  // One pass under the lock. Gives the positions whose checks would fail; the reasons are worked
  // out afterwards, because forming them takes the lock again.
  std::vector<std::size_t> look(std::optional<int> level) {
    std::vector<std::size_t> refused;
    const bool readOnly = level && tree_.isReadOnly(*level);
    ReadLock lock(tree_.lock());
    for (std::size_t position = 0; position < candidates_.size(); ++position) {
      Candidate& candidate = candidates_[position];
      if (!candidate.key) continue;
      if (readOnly || !candidate.key->isAttached() ||
          !fits(*candidate.key, kindOfValue(*candidate.value))) {
        refused.push_back(position);
        continue;
      }
      candidate.guard = candidate.key->guard();
      if (candidate.guard && candidate.key->parent()) {
        candidate.node =
            boost::static_pointer_cast<Node>(candidate.key->parent()->weak_from_this().lock());
      }
    }
    return refused;
  }

  // Whether the key, or the first of these values for a key without a kind, has that kind.
  bool fits(const Key& key, int kind) {
    if (kind == boostany::kNoValue) return false;
    if (key.kind() != boostany::kNoValue) return key.kind() == kind;
    return firstKinds_.emplace(&key, kind).first->second == kind;
  }

  void explain(std::size_t position, std::optional<int> level) {
    const Candidate& candidate = candidates_[position];
    collect(problems_, position, *candidate.key, [&] {
      ReadLock lock(tree_.lock());
      const Key& key = *candidate.key;
      if (!key.isAttached()) throw std::runtime_error("The key has been removed.");
      if (level) checkWritable(key, *level);
      const auto first = firstKinds_.find(&key);
      checkKind(key, first == firstKinds_.end() ? key.kind() : first->second, *candidate.value);
    });
  }

  Tree& tree_;
  std::vector<Candidate> candidates_;
  ProblemsAt problems_;
  std::unordered_map<const Key*, int> firstKinds_;  // of keys that have no kind yet
};

// A changed key with its new value, and after the exchange with its old one.
struct Exchange {
  KeyPtr key;
  boost::any value;
};

// What the candidates come to: for each key, in order of first appearance, its last value. The
// caller holds the writer.
std::vector<const Candidate*> lastOfEachKey(const std::vector<Candidate>& candidates) {
  std::vector<const Candidate*> last;
  last.reserve(candidates.size());
  for (const Candidate& candidate : candidates) {
    std::uint32_t& mark = candidate.key->commitMark();
    if (mark == 0) {
      last.push_back(&candidate);
      mark = static_cast<std::uint32_t>(last.size());
    } else {
      last[mark - 1] = &candidate;
    }
  }
  for (const Candidate* candidate : last) candidate->key->commitMark() = 0;
  return last;
}

// The exchanges that remain when values that are stored already are left out. The caller holds the
// writer.
std::vector<Exchange> changesOf(const std::vector<Candidate>& candidates, int level) {
  std::vector<Exchange> changes;
  for (const Candidate* candidate : lastOfEachKey(candidates)) {
    if (sameValue(candidate->key->value(level), *candidate->value)) continue;
    changes.push_back(
        {boost::static_pointer_cast<Key>(candidate->key->shared_from_this()), *candidate->value});
  }
  return changes;
}

void applyToStore(Tree& tree, int level, const std::vector<Exchange>& changes) {
  Store& store = tree.store(level);
  if (!store.keepsChanges() || changes.empty()) return;
  Changes batch;
  batch.reserve(changes.size());
  {
    ReadLock lock(tree.lock());
    for (const Exchange& change : changes) {
      batch.push_back(PutValue{change.key->path(), change.value});
    }
  }
  store.apply(batch);
}

// Stores the candidates and makes them visible; gives what changed, or nothing when another writer
// has made them impossible meanwhile.
std::optional<std::vector<Exchange>> commit(Tree& tree, Candidates& candidates, int level) {
  base::MutexLock writer(tree.writer());
  {
    ReadLock lock(tree.lock());
    for (const Candidate& candidate : candidates.list()) {
      const int kind = candidate.key->kind();
      if (!candidate.key->isAttached() ||
          (kind != boostany::kNoValue && kind != kindOfValue(*candidate.value))) {
        return std::nullopt;
      }
    }
  }
  std::vector<Exchange> changes = changesOf(candidates.list(), level);
  applyToStore(tree, level, changes);
  WriteLock lock(tree.lock());
  for (Exchange& change : changes) change.key->swapValue(level, change.value);
  return changes;
}

// Runs `operation`, which gives problems; what it throws becomes one more. For a failure of the
// whole operation rather than of one value, the path is that of the first value.
template <class Operation>
SettingsProblems withoutThrowing(const ValueRange& values, const Operation& operation) {
  ProblemsAt failure;
  SettingsProblems problems;
  if (values.empty()) return problems;
  const boost::shared_ptr<Settings>& first = values.front().first;
  try {
    return operation();
  } catch (const std::exception& thrown) {
    problems.emplace_back(first ? first->getPath() : std::string(), thrown.what());
  }
  return problems;
}

}  // namespace

SettingsProblems commitValues(Tree& tree, const ValueRange& values, const std::string& levelText) {
  return withoutThrowing(values, [&] {
    const int level = requireLevel(levelText);
    std::optional<std::vector<Exchange>> changes;
    do {
      Candidates candidates(tree, values);
      candidates.check(level);
      if (!candidates.problems().empty()) return inOrder(candidates.problems());
      changes = commit(tree, candidates, level);
    } while (!changes);
    for (const Exchange& change : *changes) publishChange(change.key);
    return SettingsProblems();
  });
}

SettingsProblems validateValues(Tree& tree, const ValueRange& values) {
  return withoutThrowing(values, [&] {
    Candidates candidates(tree, values);
    candidates.check(std::nullopt);
    return inOrder(candidates.problems());
  });
}

}  // namespace zlutil::settings::host
