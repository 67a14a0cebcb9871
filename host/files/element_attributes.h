// Reading the elements of a settings file: their attributes, and messages about them. Throws
// FormatError. One thread.
#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zlutil::settings::host {

// An error in a file. Its text names what was found and expected, in standard UTF-8.
class FormatError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Returns the text for a message: in quotes, on one line and cut if it is long.
std::string quoted(std::string_view text);

// Returns a text of the XML parser, which passes on well-formed UTF-8 only, as narrow text.
std::string narrow(std::string_view utf8);

[[noreturn]] void fail(const std::string& problem);

// The attributes of an element, found by name; borrows the element's and the attributes' texts.
class Attributes {
 public:
  // Refuses an attribute that is not in `known`.
  Attributes(const char* element, const char* const* list,
             std::initializer_list<const char*> known);

  int count() const { return count_; }

  // Returns the value, or null if the element does not have the attribute.
  const char* find(const char* name) const;

  // Returns the value, empty if the element does not have the attribute. Standard UTF-8.
  std::string textOf(const char* name) const;

  // Returns the path below the root that is the value; empty if the element does not have the
  // attribute.
  std::string pathOf(const char* name) const;

  const char* require(const char* name) const;

 private:
  int count_ = 0;
  const char* const element_;
  const char* const* const list_;
};

}  // namespace zlutil::settings::host
