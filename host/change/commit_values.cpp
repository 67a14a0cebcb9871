// Many values as one operation: Entry::setMultiple and validateMultiple. Time is linear in the
// number of values: each phase passes over them once, and acquires each lock once.
#include "host/change/given_text.h"
#include "host/change/tree_edit.h"
#include "host/change/value_batch.h"
#include "host/tree/subtree.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using Candidate = ValueBatch::Candidate;

// Returns the last value of each key, in the order in which the keys appear first. A key's mark is
// its index in the result; a mark of an earlier commit leads to another key or to none. The caller
// holds the tree's writer().
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

// Returns the changes without those that set the present value again, which are left out only if
// the store has no newer one (`isCurrent`). The caller holds the tree's writer().
KeyChanges changesOf(const std::vector<Candidate>& candidates, int level, bool isCurrent) {
  KeyChanges changes;
  changes.reserve(candidates.size());
  for (const Candidate* candidate : lastOfEachKey(candidates)) {
    if (isCurrent && boostany::sameValue(candidate->key->value(level), *candidate->value)) continue;
    changes.push_back({candidate->key, boostany::ownCopy(*candidate->value)});
  }
  return changes;
}

// Returns what the store has to do. The caller holds the tree's writer().
Changes describe(Tree& tree, int level, const KeyChanges& changes) {
  Changes batch;
  batch.reserve(changes.size());
  ReadLock lock(tree.lock());
  for (const KeyChange& change : changes) {
    if (level > kUser) describeFor(*change.key, level, batch);
    for (Change& former : formerErased(*change.key, level)) batch.push_back(std::move(former));
    const std::string path = change.key->path();
    if (change.key->kind() == boostany::kNoValue) {
      batch.push_back(FixKind{path, boostany::kindOfValue(change.value)});
    }
    batch.push_back(PutValue{path, change.value});
  }
  return batch;
}

// Stores the batch and makes it visible. Returns false, with nothing changed, if one of the keys
// cannot take its value, or if there are validators and the batch is not validated.
bool tryCommitting(TreeEdit& edit, Tree& tree, ValueBatch& batch, int level, bool isValidated) {
  const auto isPossible = [&] {
    return batch.resolve() && (isValidated || !batch.hasValidators());
  };
  if (!isPossible()) return false;
  KeyChanges changes = changesOf(batch.list(), level, tree.store(level).isCurrent());
  if (changes.empty()) return true;
  if (!edit.store(
          level, [&] { return describe(tree, level, changes); }, isPossible))
    return false;
  edit.replaceValues(level, std::move(changes));
  return true;
}

// Commits the batch. Returns the problems if it cannot.
SettingsProblems commit(Tree& tree, ValueBatch& batch, int level) {
  for (bool isValidated = false;;) {
    {
      TreeEdit edit(tree);
      if (tryCommitting(edit, tree, batch, level, isValidated)) {
        edit.finish();
        return {};
      }
    }
    // Another writer may come before the next attempt, which then finds what has become impossible.
    SettingsProblems problems = batch.findProblems();
    if (!problems.empty()) return problems;
    isValidated = batch.hasValidators();
  }
}

// Returns the problems that `operation` returns. What it throws becomes a problem with the path of
// the first value.
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
    SettingsValues copy;
    SettingsProblems noTexts;
    const ValueRange values = withNarrowTexts(given, copy, noTexts);
    if (!noTexts.empty()) return noTexts;
    tree().look();
    ValueBatch batch(tree(), values, level);
    return commit(tree(), batch, level);
  });
}

SettingsProblems Entry::validateMultiple(const ValueRange& given, int) const {
  return withoutThrowing(given, [&] {
    SettingsValues copy;
    SettingsProblems noTexts;
    const ValueRange values = withNarrowTexts(given, copy, noTexts);
    if (!noTexts.empty()) return noTexts;
    tree().look();
    ValueBatch batch(tree(), values, std::nullopt);
    batch.resolve();
    return batch.findProblems();
  });
}

}  // namespace zlutil::settings::host
