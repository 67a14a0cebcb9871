#include "service/explanation.h"

#include <boost/variant/get.hpp>

#include "host/tree/descriptions.h"
#include "host/tree/locks.h"
#include "service/failures.h"

namespace zlutil::settings {
namespace {

using namespace KORVEN::settings::core;

// Returns a validator as a person would name it.
std::string textOf(const ValidatorChoice& choice) {
  if (const auto* const java = boost::get<JValidator>(&choice)) {
    return base::displayFromNarrow(java->first() + " \"" + java->second() + '"');
  }
  if (const auto* const script = boost::get<ZValidator>(&choice)) {
    return base::displayFromNarrow("the script \"" + script->text() + '"');
  }
  return boost::get<CValidator>(&choice) ? "a C++ function" : "";
}

// Adds the effective validator and the entry that has it.
void explainValidator(const host::Key& key, Explanation& explanation) {
  const host::Entry* owner = &key;
  while (owner && !owner->validator()) owner = owner->parent();
  if (!owner) return;
  explanation.validator = textOf(host::choiceOf(owner->validator()));
  explanation.validatorPath = base::displayFromNarrow(owner->path());
}

}  // namespace

Explanation explainKey(const boost::shared_ptr<Settings>& given) {
  const auto entry = boost::dynamic_pointer_cast<host::Entry>(given);
  if (!entry) throw Failure<NoSuchKey>(std::string(), std::string());
  if (!entry->isKey()) throw Failure<NotAKeyName>(std::string(), entry->name());
  host::Tree& tree = entry->tree();
  tree.look();
  const auto key = boost::static_pointer_cast<host::Key>(entry);
  Explanation explanation;
  std::string pathInStore;
  {
    host::ReadLock lock(tree.lock());
    explanation.path = base::displayFromNarrow(key->path());
    pathInStore = key->pathBelowTop();
    explanation.kind = key->kind();
    explainValidator(*key, explanation);
    explanation.lock = host::lockFor(*key);
    explanation.description = host::descriptionOf(*key);
    const std::optional<int> inEffect = host::effectiveLevel(*key);
    for (int level = 0; level < host::kLevelCount; ++level) {
      LevelExplanation one;
      one.level = host::levelName(level);
      one.value = key->value(level);
      one.isLocked = level < key->firstLevel();
      one.leftOut = base::displayFromNarrow(tree.leftOut().reason(level, pathInStore));
      one.isInEffect = level == inEffect;
      explanation.levels.push_back(std::move(one));
    }
  }
  for (int level = 0; level < host::kLevelCount; ++level) {
    LevelExplanation& one = explanation.levels[level];
    const host::Store& store = tree.store(level);
    one.readOnlyReason = base::displayFromNarrow(store.readOnlyReason());
    for (const std::string& part : store.unreadable()) {
      one.unreadable.push_back(base::displayFromNarrow(part));
    }
    if (!one.value.empty()) one.source = base::displayFromNarrow(store.sourceOf(pathInStore));
  }
  return explanation;
}

}  // namespace zlutil::settings
