// The validators that the Java API brings and that need no Java: Range, Choice and Length of
// com.velonix.services.settings.validators, with the same rules. A process without a JVM runs them
// by these functions. Pure functions; any thread.
#pragma once

#include <boost/any.hpp>
#include <boost/optional.hpp>
#include <optional>
#include <string>

#include "service/validators.h"

namespace zlutil::settings::host {

// Returns nothing if the validator is none of these, or cannot be run on such a value without Java;
// otherwise the reason why the value is refused, or none if it is valid. Narrow text.
std::optional<boost::optional<std::string>> judgedWithoutJava(const JValidator& validator,
                                                              const boost::any& value);

}  // namespace zlutil::settings::host
