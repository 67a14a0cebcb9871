#include "host/change/given_text.h"

#include <boost/variant/get.hpp>

#include "base/text.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using KORVEN::settings::core::ValidationFailure;

bool areNarrow(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) {
    if (!base::isNarrow(text)) return false;
  }
  return true;
}

}  // namespace

std::string narrowText(const std::string& text, const std::string& what) {
  if (std::optional<std::string> narrow = base::narrowFromMixed(text)) return std::move(*narrow);
  throw Failure<ValidationFailure>("The text for " + what +
                                   " cannot be taken: it is not in UTF-8 from byte " +
                                   std::to_string(base::wellFormedLength(text) + 1) + " on.");
}

const boost::any& withNarrowTexts(const boost::any& value, const std::string& key,
                                  boost::any& copy) {
  const auto quoted = [&] { return '"' + key + '"'; };
  if (const auto* const text = boost::any_cast<std::string>(&value)) {
    if (base::isNarrow(*text)) return value;
    copy = narrowText(*text, quoted());
    return copy;
  }
  const auto* const texts = boost::any_cast<std::vector<std::string>>(&value);
  if (!texts || areNarrow(*texts)) return value;
  std::vector<std::string> narrow;
  narrow.reserve(texts->size());
  for (const std::string& text : *texts) {
    narrow.push_back(
        narrowText(text, "element " + std::to_string(narrow.size()) + " of " + quoted()));
  }
  copy = std::move(narrow);
  return copy;
}

ValueRange withNarrowTexts(const ValueRange& values, SettingsValues& copy,
                           SettingsProblems& problems) {
  for (std::size_t at = 0; at < values.size(); ++at) {
    const boost::any& value = values[at].second;
    const Settings* const entry = values[at].first.get();
    boost::any changed;
    try {
      if (&withNarrowTexts(value, entry ? entry->getName() : std::string(), changed) == &value) {
        continue;
      }
    } catch (const Failure<ValidationFailure>& failure) {
      problems.emplace_back(entry ? entry->getPath() : std::string(), failure.GetMessageTxt());
      continue;
    }
    if (copy.empty()) copy.assign(values.begin(), values.end());
    copy[at].second.swap(changed);
  }
  return copy.empty() ? values : boost::make_iterator_range(copy.cbegin(), copy.cend());
}

ValidatorChoice withNarrowTexts(const ValidatorChoice& validator, const std::string& entry) {
  const std::string what = "the validator of \"" + entry + '"';
  if (const auto* const java = boost::get<JValidator>(&validator)) {
    return JValidator(narrowText(java->first(), what), narrowText(java->second(), what));
  }
  if (const auto* const script = boost::get<ZValidator>(&validator)) {
    return ZValidator(narrowText(script->text(), what));
  }
  return validator;
}

}  // namespace zlutil::settings::host
