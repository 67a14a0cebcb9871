// Conversion of texts that C++ programs hand in to narrow text (base/text.h). Most are narrow text
// already. Standard UTF-8 for supplementary characters and a zero byte for U+0000 are converted;
// bytes that are no text are refused. Pure functions; any thread.
#pragma once

#include <boost/any.hpp>
#include <string>

#include "host/tree/entry.h"
#include "service/validators.h"

namespace zlutil::settings::host {

// Returns `value` with its texts in the narrow form: itself, or `copy`, which is assigned. Throws
// ValidationFailure, which names the key, if there are bytes that are no text.
const boost::any& withNarrowTexts(const boost::any& value, const std::string& key,
                                  boost::any& copy);

// Returns the values of a commit with their texts in the narrow form: themselves, or `copy`, which
// is assigned if one of them has to be converted. Adds a problem for each value that is refused.
ValueRange withNarrowTexts(const ValueRange& values, SettingsValues& copy,
                           SettingsProblems& problems);

// Returns the text in the narrow form. Throws ValidationFailure if its bytes are no text; `what` is
// what the message calls it.
std::string narrowText(const std::string& text, const std::string& what);
ValidatorChoice withNarrowTexts(const ValidatorChoice& validator, const std::string& entry);

}  // namespace zlutil::settings::host
