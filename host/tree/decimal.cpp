#include "host/tree/decimal.h"

#include <algorithm>
#include <charconv>

namespace zlutil::settings::host {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Returns the digits at the beginning of the text, and removes them from it.
std::string_view takeDigits(std::string_view& text) {
  std::size_t size = 0;
  while (size < text.size() && isDigit(text[size])) ++size;
  const std::string_view digits = text.substr(0, size);
  text.remove_prefix(size);
  return digits;
}

// Removes a sign from the beginning of the text; `isMinus` becomes true for a minus.
void takeSign(std::string_view& text, bool& isMinus) {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return;
  isMinus = text.front() == '-';
  text.remove_prefix(1);
}

// Reads "e-9" and the like; false for anything else but an empty text.
bool takeExponent(std::string_view text, long& exponent) {
  if (text.empty()) return true;
  if (text.front() != 'e' && text.front() != 'E') return false;
  text.remove_prefix(1);
  bool isMinus = false;
  takeSign(text, isMinus);
  int given = 0;
  if (text.empty() || !isDigit(text.front())) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), given);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  exponent += isMinus ? -static_cast<long>(given) : given;
  return true;
}

}  // namespace

std::optional<Decimal> Decimal::parse(std::string_view text) {
  Decimal number;
  takeSign(text, number.isNegative_);
  const std::string_view whole = takeDigits(text);
  std::string_view fraction;
  if (!text.empty() && text.front() == '.') {
    text.remove_prefix(1);
    fraction = takeDigits(text);
  }
  if (whole.empty() && fraction.empty()) return std::nullopt;
  number.exponent_ = static_cast<long>(whole.size());
  if (!takeExponent(text, number.exponent_)) return std::nullopt;
  number.digits_.append(whole).append(fraction);
  const std::size_t first = std::min(number.digits_.find_first_not_of('0'), number.digits_.size());
  number.digits_.erase(0, first);
  number.exponent_ -= static_cast<long>(first);
  number.digits_.erase(number.digits_.find_last_not_of('0') + 1);
  if (number.digits_.empty()) return Decimal();
  return number;
}

bool operator<(const Decimal& left, const Decimal& right) {
  const auto sign = [](const Decimal& number) {
    return number.digits_.empty() ? 0 : number.isNegative_ ? -1 : 1;
  };
  if (sign(left) != sign(right)) return sign(left) < sign(right);
  if (sign(left) == 0) return false;
  const Decimal& nearer = left.isNegative_ ? right : left;
  const Decimal& further = left.isNegative_ ? left : right;
  if (nearer.exponent_ != further.exponent_) return nearer.exponent_ < further.exponent_;
  return nearer.digits_ < further.digits_;
}

}  // namespace zlutil::settings::host
