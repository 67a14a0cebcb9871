#include "values/value_text.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <type_traits>

#include "base/text.h"
#include "values/value_kinds.h"

namespace zlutil::boostany {
namespace {

constexpr std::string_view kNaN = "NaN";
constexpr std::string_view kInfinity = "Infinity";
constexpr std::string_view kMinusInfinity = "-Infinity";

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

template <class Number>
std::optional<Number> numberFrom(std::string_view text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

// from_chars has names of its own for what is not finite; this form has exactly three.
template <class Float>
std::optional<Float> floatFrom(std::string_view text) {
  using Limits = std::numeric_limits<Float>;
  if (text == kNaN) return Limits::quiet_NaN();
  if (text == kInfinity) return Limits::infinity();
  if (text == kMinusInfinity) return -Limits::infinity();
  const std::optional<Float> number = numberFrom<Float>(text);
  return number && std::isfinite(*number) ? number : std::nullopt;
}

template <class Number>
std::string textOfNumber(Number number) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
  return std::string(buffer, result.ptr);
}

}  // namespace

template <class Element>
std::optional<Element> valueFromText(std::string_view text) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return base::narrowFromUtf8(text);
  } else if constexpr (std::is_same_v<Element, bool>) {
    text = trimmed(text);
    if (text == "true") return true;
    if (text == "false") return false;
    return std::nullopt;
  } else if constexpr (std::is_floating_point_v<Element>) {
    return floatFrom<Element>(trimmed(text));
  } else {
    return numberFrom<Element>(trimmed(text));
  }
}

template <class Element>
std::optional<std::string> textOfValue(const Element& value) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return base::utf8FromNarrow(value);
  } else if constexpr (std::is_same_v<Element, bool>) {
    return std::string(value ? "true" : "false");
  } else if constexpr (std::is_floating_point_v<Element>) {
    if (std::isnan(value)) return std::string(kNaN);
    if (std::isinf(value)) return std::string(value > 0 ? kInfinity : kMinusInfinity);
    return textOfNumber(value);
  } else {
    return textOfNumber(value);
  }
}

#define SETTINGS_ELEMENT(Element)                                           \
  template std::optional<Element> valueFromText<Element>(std::string_view); \
  template std::optional<std::string> textOfValue<Element>(const Element&)
SETTINGS_ELEMENT(std::string);
SETTINGS_ELEMENT(bool);
SETTINGS_ELEMENT(signed char);
SETTINGS_ELEMENT(unsigned char);
SETTINGS_ELEMENT(short);
SETTINGS_ELEMENT(unsigned short);
SETTINGS_ELEMENT(int);
SETTINGS_ELEMENT(unsigned int);
SETTINGS_ELEMENT(long);
SETTINGS_ELEMENT(unsigned long);
SETTINGS_ELEMENT(float);
SETTINGS_ELEMENT(double);
#undef SETTINGS_ELEMENT

}  // namespace zlutil::boostany
