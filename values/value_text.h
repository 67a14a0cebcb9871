// Single values as text, the form they have in a settings file. Every value that the form can hold
// comes back exactly; floating-point numbers are written by their shortest text that does so, NaN
// and the infinities by name. Pure functions; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zlutil::boostany {

// The value that standard UTF-8 `text` stands for; nothing when it stands for none of that type.
// White space around anything but a string is ignored; a string is taken exactly.
template <class Element>
std::optional<Element> valueFromText(std::string_view text);

// The standard UTF-8 text of a value; nothing for a string that holds a lone surrogate.
template <class Element>
std::optional<std::string> textOfValue(const Element& value);

}  // namespace zlutil::boostany
