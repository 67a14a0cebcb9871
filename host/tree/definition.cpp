#include "host/tree/definition.h"

#include <algorithm>
#include <iterator>

namespace zlutil::settings::host {

namespace {

constexpr std::string SettingDescription::*kTexts[] = {
    &SettingDescription::title,      &SettingDescription::text,
    &SettingDescription::unit,       &SettingDescription::deprecated,
    &SettingDescription::replacedBy, &SettingDescription::replaces};

}  // namespace

bool isEmpty(const SettingDescription& texts) {
  return texts.choices.empty() && std::all_of(std::begin(kTexts), std::end(kTexts),
                                              [&](auto text) { return (texts.*text).empty(); });
}

void complete(SettingDescription& texts, const SettingDescription& further) {
  for (const auto text : kTexts) {
    if ((texts.*text).empty()) texts.*text = further.*text;
  }
  if (texts.choices.empty()) texts.choices = further.choices;
}

DefinitionPtr completed(const DefinitionPtr& first, const Definition& second) {
  const boost::intrusive_ptr<Definition> result(new Definition(second));
  if (first && first->validator) result->validator = first->validator;
  if (first && first->lock) result->lock = first->lock;
  if (first && first->description) {
    SettingDescription texts = *first->description;
    if (second.description) complete(texts, *second.description);
    result->description = std::make_shared<const SettingDescription>(std::move(texts));
  }
  return result;
}

}  // namespace zlutil::settings::host
