// A decimal number of any length, for exact comparison. Immutable.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zlutil::settings::host {

class Decimal {
 public:
  // Returns the number that a text such as "-12", "0.5" or "1e-9" stands for; nothing if it stands
  // for none.
  static std::optional<Decimal> parse(std::string_view text);

  friend bool operator<(const Decimal& left, const Decimal& right);

 private:
  // The number is 0.<digits> times 10 to the exponent. No digit of zero stands at either end; no
  // digits are zero.
  bool isNegative_ = false;
  std::string digits_;
  long exponent_ = 0;
};

}  // namespace zlutil::settings::host
