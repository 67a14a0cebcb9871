// Single values as text, the form they have in a settings file. Every value that the form can hold
// comes back exactly. Floating-point numbers are written by the shortest such text, NaN and the
// infinities by name. Pure functions; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zlutil::boostany {

// Returns the value that standard UTF-8 `text` stands for; nothing if it stands for none of that
// type. Ignores white space around anything but a string.
template <class Element>
std::optional<Element> valueFromText(std::string_view text);

// Returns the standard UTF-8 text of a value; nothing for a string with a lone surrogate.
template <class Element>
std::optional<std::string> textOfValue(const Element& value);

}  // namespace zlutil::boostany

#include "values/value_text-inl.h"
