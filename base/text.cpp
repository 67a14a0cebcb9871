#include "base/text.h"

#include <cstdint>
#include <stdexcept>

namespace base {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool isHighSurrogate(std::uint32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
bool isSurrogate(std::uint32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

bool isAscii(std::string_view text) {
  for (unsigned char byte : text) {
    if (byte == 0 || byte >= 0x80) return false;
  }
  return true;
}

void appendUtf8(std::string& out, std::uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// Decodes one sequence at `position` and moves past it. Accepts standard and modified UTF-8, so
// also surrogates and C0 80; the caller refuses what its form does not have. At a malformed
// sequence moves one byte and returns nothing.
std::optional<std::uint32_t> decodeOne(std::string_view text, std::size_t& position) {
  const auto lead = static_cast<unsigned char>(text[position++]);
  if (lead < 0x80) return lead;
  const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC0 || lead > 0xF4 || position + more > text.size()) return std::nullopt;
  std::uint32_t c = lead & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    const auto byte = static_cast<unsigned char>(text[position + i]);
    if ((byte & 0xC0) != 0x80) return std::nullopt;
    c = (c << 6) | (byte & 0x3F);
  }
  static constexpr std::uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
  const bool modifiedNul = more == 1 && c == 0;
  if ((c < kLeast[more] && !modifiedNul) || c > 0x10FFFF) return std::nullopt;
  position += more;
  return c;
}

// Returns the UTF-8 of 16-bit units. A lone surrogate is replaced if `lenient`; otherwise nothing
// is returned.
std::optional<std::string> utf8FromUnits(std::u16string_view units, bool lenient) {
  std::string out;
  out.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    std::uint32_t c = units[i];
    if (isHighSurrogate(c) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
    } else if (isSurrogate(c)) {
      if (!lenient) return std::nullopt;
      c = kReplacement;
    }
    appendUtf8(out, c);
  }
  return out;
}

// Returns the 16-bit units of narrow text. Malformed bytes are replaced if `lenient`; otherwise
// nothing is returned.
std::optional<ustring> unitsFromNarrow(std::string_view narrow, bool lenient) {
  ustring out;
  out.reserve(narrow.size());
  for (std::size_t position = 0; position < narrow.size();) {
    const std::optional<std::uint32_t> c = decodeOne(narrow, position);
    if (!c && !lenient) return std::nullopt;
    if (!c || *c < 0x10000) {
      out += c ? static_cast<char16_t>(*c) : kReplacement;
    } else {
      out += static_cast<char16_t>(0xD800 + ((*c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((*c - 0x10000) & 0x3FF));
    }
  }
  return out;
}

}  // namespace

ustring to_ustring(std::string_view narrow) { return *unitsFromNarrow(narrow, true); }

std::string narrowFromUstring(std::u16string_view units) {
  std::string out;
  out.reserve(units.size());
  for (const char16_t unit : units) {
    if (unit == 0) {
      out += "\xC0\x80";
    } else {
      appendUtf8(out, unit);
    }
  }
  return out;
}

std::string codecvt_ustring_to_string(std::u16string_view units, std::string_view codec) {
  if (codec != "UTF-8") throw std::invalid_argument("unknown codec: " + std::string(codec));
  return *utf8FromUnits(units, true);
}

std::optional<std::string> utf8FromNarrow(std::string_view narrow) {
  if (isAscii(narrow)) return std::string(narrow);
  const std::optional<ustring> units = unitsFromNarrow(narrow, false);
  return units ? utf8FromUnits(*units, false) : std::nullopt;
}

std::string displayFromNarrow(std::string_view narrow) {
  return isAscii(narrow) ? std::string(narrow) : *utf8FromUnits(to_ustring(narrow), true);
}

bool isNarrow(std::string_view text) {
  for (std::size_t position = 0; position < text.size();) {
    if (text[position] == '\0') return false;
    const std::optional<std::uint32_t> c = decodeOne(text, position);
    if (!c || *c >= 0x10000) return false;
  }
  return true;
}

std::optional<std::string> narrowFromMixed(std::string_view text) {
  if (isNarrow(text)) return std::string(text);
  const std::optional<ustring> units = unitsFromNarrow(text, false);
  return units ? std::optional<std::string>(narrowFromUstring(*units)) : std::nullopt;
}

std::string withControlsEscaped(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  out.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const std::optional<std::uint32_t> c = decodeOne(text, position);
    const bool isControl = c && (*c < 0x20 || (*c >= 0x7F && *c < 0xA0));
    if (!isControl && (!c || (*c != 0x2028 && *c != 0x2029))) {
      out += text.substr(start, position - start);
    } else if (*c == '\n' || *c == '\t' || *c == '\r') {
      out += *c == '\n' ? "\\n" : *c == '\t' ? "\\t" : "\\r";
    } else {
      out += "\\u";
      for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[(*c >> shift) & 0xF];
    }
  }
  return out;
}

std::size_t wellFormedLength(std::string_view text) {
  std::size_t end = 0;
  for (std::size_t position = 0; position < text.size(); end = position) {
    if (!decodeOne(text, position)) break;
  }
  return end;
}

std::optional<std::string> narrowFromUtf8(std::string_view utf8) {
  if (isAscii(utf8)) return std::string(utf8);
  ustring units;
  units.reserve(utf8.size());
  for (std::size_t position = 0; position < utf8.size();) {
    const std::size_t start = position;
    const std::optional<std::uint32_t> c = decodeOne(utf8, position);
    const bool overlongNul = c && *c == 0 && position - start > 1;
    if (!c || isSurrogate(*c) || overlongNul) return std::nullopt;
    if (*c < 0x10000) {
      units += static_cast<char16_t>(*c);
    } else {
      units += static_cast<char16_t>(0xD800 + ((*c - 0x10000) >> 10));
      units += static_cast<char16_t>(0xDC00 + ((*c - 0x10000) & 0x3FF));
    }
  }
  return narrowFromUstring(units);
}

}  // namespace base
