// Texts as a C++ program gives them: most are narrow text already (base/text.h). Standard UTF-8 for
// supplementary characters and a zero byte for U+0000 have one meaning, and are put into that form.
// Bytes that are no text are refused. Pure functions; any thread.
#pragma once

#include <boost/any.hpp>
#include <string>

#include "host/tree/entry.h"
#include "service/validators.h"

namespace zlutil::settings::host {

// `value` with its texts in the narrow form: itself, or a copy in `place`. Throws ValidationFailure
// that names the key when there are bytes that are no text.
const boost::any& withNarrowTexts(const boost::any& value, const std::string& key,
                                  boost::any& place);

// The same for all values of a commit. `place` gets a copy of all of them when one has to be
// changed; the result is where the values are. For each value that has to be refused, `problems`
// gets one.
ValueRange withNarrowTexts(const ValueRange& values, SettingsValues& place,
                           SettingsProblems& problems);

// The text in the narrow form. Throws ValidationFailure when it is none; `what` says for whom.
std::string narrowText(const std::string& text, const std::string& what);
ValidatorChoice withNarrowTexts(const ValidatorChoice& validator, const std::string& entry);

}  // namespace zlutil::settings::host
