// The identity of a settings entry. Each entry has one for its whole life, and no two entries of a
// process ever share one. A value; may be used on any thread.
#pragma once

#include <cstdint>
#include <string>

namespace zlutil {
namespace exchange {

class IDType {
 public:
  constexpr explicit IDType(std::uint64_t value) : value_(value) {}
  constexpr std::uint64_t value() const { return value_; }

  // Returns the identity as text, the second half of an event topic.
  std::string toString() const { return std::to_string(value_); }

  friend constexpr bool operator==(IDType a, IDType b) { return a.value_ == b.value_; }
  friend constexpr bool operator!=(IDType a, IDType b) { return a.value_ != b.value_; }

 private:
  std::uint64_t value_;
};

}  // namespace exchange
}  // namespace zlutil
