#include "host/tree/descriptions.h"

#include <boost/variant/get.hpp>

#include "host/tree/standard_validators.h"
#include "service/failures.h"

namespace zlutil::settings {
namespace host {
namespace {

void addConstraint(const Entry& entry, SettingDescription& description) {
  const ValidatorPtr validator = entry.effectiveValidator();
  const JValidator* const java = boost::get<JValidator>(&choiceOf(validator));
  if (!java) return;
  description.constraint = base::displayFromNarrow(constraintText(*java));
  if (!description.choices.empty()) return;
  for (const std::string& choice : choicesOf(*java)) {
    description.choices.push_back({base::displayFromNarrow(choice), ""});
  }
}

}  // namespace

SettingDescription ownDescriptionOf(const Entry& entry) {
  SettingDescription description;
  for (int level = kLevelCount; level-- > 0;) {
    const DefinitionPtr part = entry.definition(level);
    if (part && part->description) complete(description, *part->description);
  }
  return description;
}

SettingDescription descriptionOf(const Entry& entry) {
  SettingDescription description = ownDescriptionOf(entry);
  if (entry.isKey()) addConstraint(entry, description);
  return description;
}

}  // namespace host

SettingDescription describe(const boost::shared_ptr<Settings>& given) {
  const auto entry = boost::dynamic_pointer_cast<host::Entry>(given);
  if (!entry) throw Failure<KORVEN::settings::core::NoSuchNode>(std::string(), std::string());
  entry->tree().look();
  host::ReadLock lock(entry->tree().lock());
  return host::descriptionOf(*entry);
}

}  // namespace zlutil::settings
