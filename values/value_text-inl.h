// Implementation of values/value_text.h; included by it only.
#pragma once

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>
#include <type_traits>

#include "base/text.h"

namespace zlutil::boostany {
namespace detail {

inline constexpr std::string_view kNaN = "NaN";
inline constexpr std::string_view kInfinity = "Infinity";
inline constexpr std::string_view kMinusInfinity = "-Infinity";

inline std::string_view trimmed(std::string_view text) {
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

// from_chars accepts other names of NaN and the infinities too; this form has exactly three.
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

}  // namespace detail

template <class Element>
std::optional<Element> valueFromText(std::string_view text) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return base::narrowFromUtf8(text);
  } else if constexpr (std::is_same_v<Element, bool>) {
    text = detail::trimmed(text);
    if (text == "true") return true;
    if (text == "false") return false;
    return std::nullopt;
  } else if constexpr (std::is_floating_point_v<Element>) {
    return detail::floatFrom<Element>(detail::trimmed(text));
  } else {
    return detail::numberFrom<Element>(detail::trimmed(text));
  }
}

template <class Element>
std::optional<std::string> textOfValue(const Element& value) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return base::utf8FromNarrow(value);
  } else if constexpr (std::is_same_v<Element, bool>) {
    return std::string(value ? "true" : "false");
  } else if constexpr (std::is_floating_point_v<Element>) {
    if (std::isnan(value)) return std::string(detail::kNaN);
    if (std::isinf(value))
      return std::string(value > 0 ? detail::kInfinity : detail::kMinusInfinity);
    return detail::textOfNumber(value);
  } else {
    return detail::textOfNumber(value);
  }
}

}  // namespace zlutil::boostany
