// Single values as text that has every bit of the value: as values/value_text.h, and a NaN with
// other bits than the quiet NaN is "NaN:<bits in hex>". Pure functions; any thread.
#pragma once

#include <cstdint>
#include <cstring>

#include "values/value_text.h"

namespace zlutil::boostany {
namespace detail {

inline constexpr std::string_view kBitsOfNaN = "NaN:";

template <class Number>
void appendHex(std::string& text, Number number, int digits) {
  constexpr char kDigits[] = "0123456789abcdef";
  while (digits > 0) text += kDigits[(number >> (4 * --digits)) & 0xF];
}

template <class Float>
using BitsOf = std::conditional_t<sizeof(Float) == 4, std::uint32_t, std::uint64_t>;

template <class Float>
BitsOf<Float> bitsOf(Float number) {
  BitsOf<Float> bits;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

}  // namespace detail

// Returns the text of a value that is no string.
template <class Element>
std::string exactText(const Element& element) {
  if constexpr (std::is_floating_point_v<Element>) {
    if (std::isnan(element) &&
        detail::bitsOf(element) != detail::bitsOf(std::numeric_limits<Element>::quiet_NaN())) {
      std::string text(detail::kBitsOfNaN);
      detail::appendHex(text, detail::bitsOf(element), 2 * sizeof(Element));
      return text;
    }
  }
  return *textOfValue(element);
}

// Returns the value of a text; nothing if it is the text of none.
template <class Element>
std::optional<Element> valueFromExactText(std::string_view text) {
  if constexpr (std::is_floating_point_v<Element>) {
    if (text.substr(0, detail::kBitsOfNaN.size()) == detail::kBitsOfNaN) {
      detail::BitsOf<Element> bits;
      const char* const end = text.data() + text.size();
      const auto [stop, error] =
          std::from_chars(text.data() + detail::kBitsOfNaN.size(), end, bits, 16);
      if (error != std::errc() || stop != end) return std::nullopt;
      Element number;
      std::memcpy(&number, &bits, sizeof number);
      return std::isnan(number) ? std::optional<Element>(number) : std::nullopt;
    }
  }
  return valueFromText<Element>(text);
}

}  // namespace zlutil::boostany
