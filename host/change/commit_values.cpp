// Many values as one operation: Entry::setMultiple and validateMultiple. Time is linear in the
// number of values: each phase passes over them once, and one acquisition of a lock serves a whole
// pass.
#include "host/change/given_text.h"
#include "host/change/tree_edit.h"
#include "host/change/value_batch.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using Candidate = ValueBatch::Candidate;

// What the candidates come to: for each key, in order of first appearance, its last value. A key's
// mark says where it stands in the list; a mark that an earlier commit has left says nothing, and
// shows it by leading to another key or to none. The caller holds the writer.
std::vector<const Candidate*> lastOfEachKey(const std::vector<Candidate>& candidates) {
  std::vector<const Candidate*> last;
  last.reserve(candidates.size());
  for (const Candidate& candidate : candidates) {
    std::uint32_t& mark = candidate.key->commitMark();
    if (mark < last.size() && last[mark]->key == candidate.key) {
      last[mark] = &candidate;
    } else {
      mark = static_cast<std::uint32_t>(last.size());
      last.push_back(&candidate);
    }
  }
  return last;
}

// The changes that remain when values that are stored already are left out; none is where others
// may have stored another one meanwhile (`isCurrent` is false). The caller holds the writer.
KeyChanges changesOf(const std::vector<Candidate>& candidates, int level, bool isCurrent) {
  KeyChanges changes;
  changes.reserve(candidates.size());
  for (const Candidate* candidate : lastOfEachKey(candidates)) {
    if (isCurrent && sameValue(candidate->key->value(level), *candidate->value)) continue;
    changes.push_back({candidate->key, ownCopy(*candidate->value)});
  }
  return changes;
}

// The caller holds the writer.
Changes describe(Tree& tree, const KeyChanges& changes) {
  Changes batch;
  batch.reserve(changes.size());
  ReadLock lock(tree.lock());
  for (const KeyChange& change : changes) {
    const std::string path = change.key->path();
    if (change.key->kind() == boostany::kNoValue) {
      batch.push_back(FixKind{path, kindOfValue(change.value)});
    }
    batch.push_back(PutValue{path, change.value});
  }
  return batch;
}

// Stores the batch and makes it visible. Returns false, with nothing done, if one of the values
// cannot go into its key, or if validators have to judge and have not.
bool tryCommitting(TreeEdit& edit, Tree& tree, ValueBatch& batch, int level, bool isValidated) {
  const auto isPossible = [&] {
    return batch.resolve() && (isValidated || !batch.hasValidators());
  };
  if (!isPossible()) return false;
  KeyChanges changes = changesOf(batch.list(), level, tree.store(level).isCurrent());
  if (changes.empty()) return true;
  if (!edit.store(
          level, [&] { return describe(tree, changes); }, isPossible))
    return false;
  edit.replaceValues(level, std::move(changes));
  return true;
}

// Commits the batch, or returns why it cannot be.
SettingsProblems commit(Tree& tree, ValueBatch& batch, int level) {
  for (bool isValidated = false;;) {
    {
      TreeEdit edit(tree);
      if (tryCommitting(edit, tree, batch, level, isValidated)) {
        edit.finish();
        return {};
      }
    }
    // Another writer may come before the next attempt; what is impossible by then is found there.
    SettingsProblems problems = batch.findProblems();
    if (!problems.empty()) return problems;
    isValidated = batch.hasValidators();
  }
}

// Runs `operation`, which gives problems; what it throws becomes one more. For a failure of the
// whole operation rather than of one value, the path is that of the first value.
template <class Operation>
SettingsProblems withoutThrowing(const ValueRange& values, const Operation& operation) {
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

SettingsProblems Entry::setMultiple(const ValueRange& given, const std::string& levelText, int) {
  return withoutThrowing(given, [&] {
    const int level = requireLevel(levelText);
    SettingsValues place;
    SettingsProblems noTexts;
    const ValueRange values = withNarrowTexts(given, place, noTexts);
    if (!noTexts.empty()) return noTexts;
    tree().look();
    ValueBatch batch(tree(), values, level);
    return commit(tree(), batch, level);
  });
}

SettingsProblems Entry::validateMultiple(const ValueRange& given, int) const {
  return withoutThrowing(given, [&] {
    SettingsValues place;
    SettingsProblems noTexts;
    const ValueRange values = withNarrowTexts(given, place, noTexts);
    if (!noTexts.empty()) return noTexts;
    tree().look();
    ValueBatch batch(tree(), values, std::nullopt);
    batch.resolve();
    return batch.findProblems();
  });
}

}  // namespace zlutil::settings::host
