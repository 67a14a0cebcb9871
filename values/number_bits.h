// Numbers of any arithmetic kind as 64 bits: integers by their value, floating-point numbers by
// their own bits, which come first. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace zlutil::boostany {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

template <class Number>
std::int64_t toBits(Number number) {
  if constexpr (std::is_floating_point_v<Number>) {
    std::int64_t bits = 0;
    std::memcpy(&bits, &number, sizeof(number));
    return bits;
  } else {
    return static_cast<std::int64_t>(number);
  }
}

template <class Number>
Number fromBits(std::int64_t bits) {
  if constexpr (std::is_floating_point_v<Number>) {
    Number number;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
  } else if constexpr (std::is_same_v<Number, bool>) {
    return bits != 0;
  } else {
    return static_cast<Number>(bits);
  }
}

}  // namespace zlutil::boostany
