// Constraints: validators that the service itself runs, for values from Java and from C++ alike.
// They are the validators Range, Choice and Length of the Java package
// com.velonix.services.settings.validators, and the elements `range`, `choices` and `length` of
// settings files. Pure functions; any thread.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "service/validators.h"

namespace zlutil {
namespace settings {
namespace constraints {

// The package of the validators' classes in Java, with a dot at its end.
inline constexpr char kPackage[] = "com.velonix.services.settings.validators.";

// Accepts numbers between two decimal numbers, both inclusive; an empty text is no bound. Of an
// array, each element is checked.
inline JValidator range(const std::string& min, const std::string& max) {
  return JValidator(std::string(kPackage) + "Range", min + ".." + max);
}

// Accepts texts with as many characters, and arrays with as many elements.
inline JValidator length(const std::string& min, const std::string& max) {
  return JValidator(std::string(kPackage) + "Length", min + ".." + max);
}

// Accepts the values that are written like one of the texts in a settings file; floating-point
// numbers may be written in other ways. Of an array, each element is checked. Throws
// std::invalid_argument for no texts, and for one with the character "|", which separates them in
// the argument.
inline JValidator choices(const std::vector<std::string>& texts) {
  if (texts.empty()) throw std::invalid_argument("choices need at least one text");
  std::string joined;
  for (const std::string& text : texts) {
    if (text.find('|') != std::string::npos) {
      throw std::invalid_argument("a choice cannot have the character \"|\": " + text);
    }
    joined += (&text == &texts.front() ? "" : "|") + text;
  }
  return JValidator(std::string(kPackage) + "Choice", joined);
}

}  // namespace constraints
}  // namespace settings
}  // namespace zlutil
