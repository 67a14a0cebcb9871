#include "host/change/value_checks.h"

#include "host/tree/locks.h"
#include "service/failures.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

}  // namespace

void checkWritable(const Entry& entry, int level) {
  if (entry.firstLevel() == kSession && !entry.tree().isReadOnly(level)) return;
  const std::string reason = whyNotWritable(entry, level);
  if (!reason.empty()) {
    throw Failure<CantModifyValuesOnReadOnlyLevel>(entry.path(), levelName(level), reason);
  }
}

void checkKind(const Key& key, int kind, const boost::any& value) {
  if (value.empty()) throw Failure<DefaultValidationFailedOnVoidType>(key.path());
  const int given = boostany::kindOfValue(value);
  if (given == boostany::kNoValue) {
    throw Failure<ValidationFailure>("\"" + key.path() + "\" cannot hold a value of this type.");
  }
  if (kind != boostany::kNoValue && kind != given) {
    throw Failure<ValidationFailure>("\"" + key.path() + "\" holds " +
                                     std::string(boostany::kindName(kind)) + " values, not " +
                                     std::string(boostany::kindName(given)) + ".");
  }
}

}  // namespace zlutil::settings::host
