#include "host/change/value_batch.h"

#include <stdexcept>
#include <typeinfo>

#include "host/change/value_checks.h"
#include "service/failures.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

constexpr char kRemoved[] = "The key has been removed.";

// Returns why `check` fails, or nothing.
template <class Check>
std::optional<std::string> reasonOf(const Check& check) {
  try {
    check();
    return std::nullopt;
  } catch (const std::exception& failure) {
    return failure.what();
  } catch (const IUserException& failure) {
    return failure.GetMessageTxt();
  } catch (...) {
    return "unknown failure";
  }
}

}  // namespace

bool ValueBatch::resolve() {
  candidates_.clear();
  candidates_.reserve(values_.size());
  refused_.clear();
  parents_.clear();
  firstKinds_.clear();
  hasValidators_ = false;
  const bool isReadOnly = level_ && tree_.isReadOnly(*level_);
  ReadLock lock(tree_.lock());
  for (std::size_t position = 0; position < values_.size(); ++position) {
    Key* const key = keyAt(position);
    candidates_.push_back({key, &values_[position].second, key ? parentOf(*key) : 0, {}});
    Candidate& candidate = candidates_.back();
    if (key) {
      candidate.validator = key->validator();
      if (!candidate.validator) candidate.validator = parents_[candidate.parent].validator;
      if (candidate.validator) hasValidators_ = true;
    }
    if (!key || isReadOnly || !fits(candidate)) refused_.push_back(position);
  }
  return refused_.empty();
}

Key* ValueBatch::keyAt(std::size_t position) const {
  Settings* const entry = values_[position].first.get();
  if (!entry || typeid(*entry) != typeid(Key)) return nullptr;
  Key* const key = static_cast<Key*>(entry);
  return &key->tree() == &tree_ ? key : nullptr;
}

std::size_t ValueBatch::parentOf(const Key& key) {
  const Node* const node = key.parent();
  if (parents_.empty() || parents_.back().node != node) {
    parents_.push_back(node ? Parent{node, node->isAttached(), node->effectiveValidator()}
                            : Parent{nullptr, false, ValidatorPtr()});
  }
  return parents_.size() - 1;
}

// Of several values for a key without a kind the first one fixes the kind.
bool ValueBatch::fits(const Candidate& candidate) {
  const Key& key = *candidate.key;
  const bool isAttached = key.parent() ? parents_[candidate.parent].isAttached : !key.isRemoved();
  const int kind = boostany::kindOfValue(*candidate.value);
  if (!isAttached || kind == boostany::kNoValue) return false;
  if (level_ && *level_ < key.firstLevel()) return false;
  if (key.kind() != boostany::kNoValue) return key.kind() == kind;
  return firstKinds_.emplace(&key, kind).first->second == kind;
}

SettingsProblems ValueBatch::findProblems() {
  ProblemsAt problems;
  const auto note = [&](std::size_t position, const auto& check) {
    const std::optional<std::string> reason = reasonOf(check);
    if (!reason) return;
    const Settings* const entry = values_[position].first.get();
    problems.emplace(position, std::make_pair(entry ? entry->getPath() : "", *reason));
  };
  for (const std::size_t position : refused_) note(position, [&] { checkKey(position); });
  if (hasValidators_) {
    for (std::size_t position = 0; position < candidates_.size(); ++position) {
      const Candidate& candidate = candidates_[position];
      if (!candidate.key || problems.count(position)) continue;
      note(position, [&] { validate(candidate); });
    }
  }
  SettingsProblems list;
  list.reserve(problems.size());
  for (auto& problem : problems) list.push_back(std::move(problem.second));
  return list;
}

// Throws the reason why the key cannot take the value, as the tree is now.
void ValueBatch::checkKey(std::size_t position) const {
  if (!candidates_[position].key) {
    const Settings* const entry = values_[position].first.get();
    throw std::runtime_error(!entry            ? "There is no such entry."
                             : !entry->isKey() ? "A node holds no value."
                                               : "The key is in another tree.");
  }
  const Key& key = *candidates_[position].key;
  ReadLock lock(tree_.lock());
  if (!key.isAttached()) throw std::runtime_error(kRemoved);
  if (level_) checkWritable(key, *level_);
  const auto first = firstKinds_.find(&key);
  checkKind(key, first == firstKinds_.end() ? key.kind() : first->second,
            *candidates_[position].value);
}

void ValueBatch::validate(const Candidate& candidate) const {
  if (!candidate.validator) return;
  const boost::shared_ptr<Settings> node = candidate.key->getParent();
  if (!node && parents_[candidate.parent].node) throw std::runtime_error(kRemoved);
  runValidator(*candidate.validator, node, candidate.key->name(), *candidate.value);
}

}  // namespace zlutil::settings::host
