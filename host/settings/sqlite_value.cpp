#include "host/settings/sqlite_value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/text.h"
#include "host/settings/stored_value.h"
#include "host/settings/value_text.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

constexpr std::string_view kBitsOfNaN = "NaN:";
constexpr std::string_view kBytesBegin = "{\"bytes\":\"";
constexpr std::string_view kBytesEnd = "\"}";

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
}

// Standard UTF-8 that becomes the same narrow text again; nothing when there is none.
std::optional<std::string> exactUtf8(const std::string& narrow) {
  if (isPlain(narrow)) return narrow;
  std::optional<std::string> utf8 = base::utf8FromNarrow(narrow);
  if (!utf8 || utf8->find('\0') != std::string::npos) return std::nullopt;
  return base::narrowFromUtf8(*utf8) == narrow ? utf8 : std::nullopt;
}

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

template <class Element>
std::string textOfElement(const Element& element) {
  if constexpr (std::is_floating_point_v<Element>) {
    if (std::isnan(element) &&
        bitsOf(element) != bitsOf(std::numeric_limits<Element>::quiet_NaN())) {
      std::string text(kBitsOfNaN);
      appendHex(text, bitsOf(element), 2 * sizeof(Element));
      return text;
    }
  }
  return *textOfValue(element);
}

template <class Element>
std::optional<Element> elementFrom(std::string_view text) {
  if constexpr (std::is_floating_point_v<Element>) {
    if (text.substr(0, kBitsOfNaN.size()) == kBitsOfNaN) {
      BitsOf<Element> bits;
      const char* const end = text.data() + text.size();
      const auto [stop, error] = std::from_chars(text.data() + kBitsOfNaN.size(), end, bits, 16);
      if (error != std::errc() || stop != end) return std::nullopt;
      Element number;
      std::memcpy(&number, &bits, sizeof number);
      return std::isnan(number) ? std::optional<Element>(number) : std::nullopt;
    }
  }
  return valueFromText<Element>(text);
}

void appendQuoted(std::string& json, std::string_view utf8) {
  json += '"';
  for (const char c : utf8) {
    if (c == '"' || c == '\\') {
      json += '\\';
      json += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      json += "\\u";
      appendHex(json, static_cast<unsigned>(c), 4);
    } else {
      json += c;
    }
  }
  json += '"';
}

void appendElement(std::string& json, const std::string& text) {
  if (const std::optional<std::string> utf8 = exactUtf8(text)) {
    appendQuoted(json, *utf8);
    return;
  }
  json += kBytesBegin;
  for (const char c : text) appendHex(json, static_cast<unsigned char>(c), 2);
  json += kBytesEnd;
}

template <class Number>
void appendElement(std::string& json, Number number) {
  const std::string text = textOfElement(number);
  bool isQuoted = false;
  if constexpr (std::is_floating_point_v<Number>) isQuoted = !std::isfinite(number);
  if (isQuoted) json += '"';
  json += text;
  if (isQuoted) json += '"';
}

// The elements of an array as columnFromValue writes it; any white space between them is allowed.
class ArrayReader {
 public:
  explicit ArrayReader(std::string_view json) : rest_(json) {}

  // Calls `add` with the text of each element and whether that is narrow text to be taken as it
  // is; false when this is no such array, or `add` says so.
  template <class Add>
  bool read(const Add& add) {
    if (!take('[')) return false;
    if (take(']')) return atEnd();
    do {
      std::string text;
      bool isNarrow = false;
      if (!element(text, isNarrow) || !add(text, isNarrow)) return false;
    } while (take(','));
    return take(']') && atEnd();
  }

 private:
  void skipSpace() {
    const std::size_t first = rest_.find_first_not_of(" \t\r\n");
    rest_.remove_prefix(std::min(first, rest_.size()));
  }
  bool atEnd() {
    skipSpace();
    return rest_.empty();
  }
  bool take(char c) {
    skipSpace();
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool element(std::string& text, bool& isNarrow) {
    skipSpace();
    if (rest_.substr(0, kBytesBegin.size()) == kBytesBegin) {
      isNarrow = true;
      return bytes(text);
    }
    if (take('"')) return quoted(text);
    const std::size_t size = std::min(rest_.find_first_of(",] \t\r\n"), rest_.size());
    text = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return size > 0;
  }

  bool hex(int digits, unsigned& number) {
    const std::string_view text = rest_.substr(0, digits);
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (error != std::errc() || stop != text.data() + digits) return false;
    rest_.remove_prefix(digits);
    return true;
  }

  bool bytes(std::string& text) {
    rest_.remove_prefix(kBytesBegin.size());
    for (unsigned byte = 0; hex(2, byte);) text += static_cast<char>(byte);
    if (rest_.substr(0, kBytesEnd.size()) != kBytesEnd) return false;
    rest_.remove_prefix(kBytesEnd.size());
    return true;
  }

  bool quoted(std::string& text) {
    while (!rest_.empty()) {
      const char c = rest_.front();
      rest_.remove_prefix(1);
      if (c == '"') return true;
      if (c != '\\') {
        text += c;
      } else if (!escaped(text)) {
        return false;
      }
    }
    return false;
  }

  bool escaped(std::string& text) {
    if (rest_.empty()) return false;
    const char c = rest_.front();
    rest_.remove_prefix(1);
    unsigned unit = 0;
    if (c != 'u') {
      text += c;
      return c == '"' || c == '\\';
    }
    if (!hex(4, unit) || unit >= 0x20) return false;
    text += static_cast<char>(unit);
    return true;
  }

  std::string_view rest_;
};

template <class Element>
boost::any vectorFrom(std::string_view json) {
  std::vector<Element> elements;
  const auto add = [&elements](const std::string& text, bool isNarrow) {
    std::optional<Element> element;
    if constexpr (std::is_same_v<Element, std::string>) {
      if (isNarrow) element = text;
    } else if (isNarrow) {
      return false;
    }
    if (!element) element = elementFrom<Element>(text);
    if (element) elements.push_back(std::move(*element));
    return element.has_value();
  };
  return ArrayReader(json).read(add) ? boost::any(std::move(elements)) : boost::any();
}

}  // namespace

ColumnValue columnFromNarrow(const std::string& narrow) {
  if (std::optional<std::string> utf8 = exactUtf8(narrow)) return {false, std::move(*utf8)};
  return {true, narrow};
}

std::optional<std::string> narrowFromColumn(std::string_view bytes, bool isBlob) {
  if (isBlob) return std::string(bytes);
  // A page that has been cut off reads as zeros.
  if (bytes.find('\0') != std::string_view::npos) return std::nullopt;
  return base::narrowFromUtf8(bytes);
}

ColumnValue columnFromValue(const boost::any& value) {
  ColumnValue column{false, {}};
  boostany::withTypeOfKind(kindOfValue(value), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    const Type& typed = *boost::unsafe_any_cast<Type>(&value);
    if constexpr (std::is_same_v<Type, std::string>) {
      column = columnFromNarrow(typed);
    } else if constexpr (boostany::kIsVector<Type>) {
      column.bytes = '[';
      for (const boostany::ElementOf<Type>& element : typed) {
        if (column.bytes.size() > 1) column.bytes += ',';
        appendElement(column.bytes, element);
      }
      column.bytes += ']';
    } else {
      column.bytes = textOfElement(typed);
    }
  });
  return column;
}

boost::any valueFromColumn(int kind, std::string_view bytes, bool isBlob) {
  boost::any value;
  boostany::withTypeOfKind(kind, [&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (std::is_same_v<Type, std::string>) {
      if (auto text = narrowFromColumn(bytes, isBlob)) value = std::move(*text);
    } else if (isBlob) {
      return;
    } else if constexpr (boostany::kIsVector<Type>) {
      value = vectorFrom<boostany::ElementOf<Type>>(bytes);
    } else {
      if (const auto scalar = elementFrom<Type>(bytes)) value = *scalar;
    }
  });
  return value;
}

}  // namespace zlutil::settings::host
