// The constraints (service/constraints.h): Range, Choice and Length of
// com.velonix.services.settings.validators, with the same rules. The host runs them by these
// functions, also for values from Java. Pure functions; any thread. Texts are narrow.
#pragma once

#include <boost/any.hpp>
#include <boost/optional.hpp>
#include <optional>
#include <string>
#include <vector>

#include "service/validators.h"

namespace zlutil::settings::host {

// Returns nothing if the validator is no constraint; otherwise the reason why the value is refused,
// or none if it is valid.
std::optional<boost::optional<std::string>> judged(const JValidator& validator,
                                                   const boost::any& value);

// Returns the mistake in a validator for keys of the kind (kNoValue for any): an argument that is
// none, or a class that the package does not have. Nothing if there is none, or if the class is in
// another package.
std::optional<std::string> mistakeOf(const JValidator& validator, int kind);

// Returns the validator for people: the name of the constraint and its argument, or "java", the
// class and the argument.
std::string constraintText(const JValidator& validator);

// Returns the texts that a Choice accepts; none for another validator.
std::vector<std::string> choicesOf(const JValidator& validator);

}  // namespace zlutil::settings::host
