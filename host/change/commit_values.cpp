// Many values as one operation: setMultiple and validateMultiple. Time is linear in the number of
// values: each phase passes over them once, and one acquisition of a lock serves a whole pass.
#include "host/change/external_changes.h"
#include "host/change/external_events.h"
#include "host/change/given_text.h"
#include "host/change/publication.h"
#include "host/change/value_batch.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using Candidate = Candidates::Candidate;

// A changed key with its new value, and after the exchange with its old one.
struct KeyChange {
  Key* key;
  boost::any value;
};

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
std::vector<KeyChange> changesOf(const std::vector<Candidate>& candidates, int level,
                                 bool isCurrent) {
  std::vector<KeyChange> changes;
  changes.reserve(candidates.size());
  for (const Candidate* candidate : lastOfEachKey(candidates)) {
    if (isCurrent && sameValue(candidate->key->value(level), *candidate->value)) continue;
    changes.push_back({candidate->key, ownCopy(*candidate->value)});
  }
  return changes;
}

// The caller holds the writer.
Changes describe(Tree& tree, const std::vector<KeyChange>& changes) {
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

// Stores the candidates and makes them visible. False, and nothing done, when one of them cannot go
// into its key, or when validators have to be asked and have not been.
bool commit(Tree& tree, Candidates& candidates, int level, bool validated, ChangedKeys& changed) {
  std::vector<KeyChange> changes;  // the old values are let go of after the locks
  const TellOfOthers telling(tree);
  WriterLock writer(tree.writer());
  const auto fit = [&] { return candidates.fit() && (validated || !candidates.hasValidators()); };
  if (!fit()) return false;
  Store& store = tree.store(level);
  changes = changesOf(candidates.list(), level, store.isCurrent());
  if (changes.empty()) return true;
  if (store.keepsChanges() &&
      !store.apply(describe(tree, changes), [&](const ForeignChanges& foreign) {
        bringIn(tree, level, foreign);
        return fit();
      })) {
    return false;
  }
  WriteLock lock(tree.lock());
  for (KeyChange& change : changes) {
    change.key->swapValue(level, change.value);
    if (!sameValue(change.key->value(level), change.value)) changed.add(*change.key);
  }
  return true;
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

SettingsProblems commitValues(Tree& tree, const ValueRange& given, const std::string& levelText) {
  return withoutThrowing(given, [&] {
    const int level = requireLevel(levelText);
    SettingsValues place;
    SettingsProblems noTexts;
    const ValueRange values = withNarrowTexts(given, place, noTexts);
    if (!noTexts.empty()) return noTexts;
    tree.look();
    Candidates candidates(tree, values, level);
    ChangedKeys changed;
    // Another writer may come between the validators and the next attempt; what has become
    // impossible by then is found by the next check.
    for (bool validated = false; !commit(tree, candidates, level, validated, changed);) {
      SettingsProblems problems = candidates.check();
      if (!problems.empty()) return problems;
      validated = candidates.hasValidators();
    }
    changed.publish();
    return SettingsProblems();
  });
}

SettingsProblems validateValues(Tree& tree, const ValueRange& given) {
  return withoutThrowing(given, [&] {
    SettingsValues place;
    SettingsProblems noTexts;
    const ValueRange values = withNarrowTexts(given, place, noTexts);
    if (!noTexts.empty()) return noTexts;
    tree.look();
    Candidates candidates(tree, values, std::nullopt);
    candidates.fit();
    return candidates.check();
  });
}

}  // namespace zlutil::settings::host
