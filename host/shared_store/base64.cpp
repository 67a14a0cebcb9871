#include "host/shared_store/base64.h"

#include <array>
#include <cstdint>

namespace zlutil::settings::host {
namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNone = 0xFF;

constexpr std::array<std::uint8_t, 256> makeValues() {
  std::array<std::uint8_t, 256> values{};
  for (std::uint8_t& value : values) value = kNone;
  for (std::uint8_t digit = 0; digit < 64; ++digit) {
    values[static_cast<unsigned char>(kDigits[digit])] = digit;
  }
  return values;
}

constexpr std::array<std::uint8_t, 256> kValues = makeValues();

}  // namespace

std::string base64From(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      group = group << 8 | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0);
    }
    for (int digit = 3; digit >= 0; --digit) text += kDigits[group >> (6 * digit) & 0x3F];
  }
  const std::size_t padding = (3 - bytes.size() % 3) % 3;
  text.replace(text.size() - padding, padding, padding, '=');
  return text;
}

std::optional<std::string> bytesFromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && !text.empty() && text.back() == '=') {
    text.remove_suffix(1);
    ++padding;
  }
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 2);
  std::uint32_t group = 0;
  int bits = 0;
  for (const char c : text) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(c)];
    if (value == kNone) return std::nullopt;
    group = group << 6 | value;
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes += static_cast<char>(group >> bits);
    group &= (1u << bits) - 1;
  }
  // The bits that are left over belong to no byte.
  if (group != 0) return std::nullopt;
  return bytes;
}

}  // namespace zlutil::settings::host
