#include "host/user_store/sqlite_value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"
#include "values/value_text.h"

namespace zlutil::settings::host {
namespace {

constexpr std::string_view kBitsOfNaN = "NaN:";
constexpr char kBytes[] = "bytes";

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
}

// Returns the standard UTF-8 that converts back to the same narrow text, or nothing if none does.
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
  return *boostany::textOfValue(element);
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
  return boostany::valueFromText<Element>(text);
}

// Returns the element as JSON. A float is written as the double of the same value.
template <class Element>
nlohmann::json jsonOf(const Element& element) {
  if constexpr (std::is_same_v<Element, std::string>) {
    if (std::optional<std::string> utf8 = exactUtf8(element)) return std::move(*utf8);
    std::string hex;
    for (const char c : element) appendHex(hex, static_cast<unsigned char>(c), 2);
    nlohmann::json bytes;
    bytes[kBytes] = hex;
    return bytes;
  } else if constexpr (std::is_floating_point_v<Element>) {
    if (!std::isfinite(element)) return textOfElement(element);
    return static_cast<double>(element);
  } else {
    return element;
  }
}

// Decodes pairs of hexadecimal digits. Returns nothing if the text is anything else.
std::optional<std::string> bytesFromHex(std::string_view hex) {
  std::string bytes;
  for (; !hex.empty(); hex.remove_prefix(2)) {
    unsigned char byte;
    const char* const end = hex.data() + std::min<std::size_t>(2, hex.size());
    const auto [stop, error] = std::from_chars(hex.data(), end, byte, 16);
    if (error != std::errc() || stop != hex.data() + 2) return std::nullopt;
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

std::optional<std::string> textFrom(const nlohmann::json& json) {
  if (json.is_string()) return base::narrowFromUtf8(json.get_ref<const std::string&>());
  if (!json.is_object() || json.size() != 1) return std::nullopt;
  const auto bytes = json.find(kBytes);
  if (bytes == json.end() || !bytes->is_string()) return std::nullopt;
  return bytesFromHex(bytes->get_ref<const std::string&>());
}

template <class Float>
std::optional<Float> floatFrom(const nlohmann::json& json) {
  if (json.is_string()) {
    const auto number = elementFrom<Float>(json.get_ref<const std::string&>());
    return number && !std::isfinite(*number) ? number : std::nullopt;
  }
  if (!json.is_number()) return std::nullopt;
  const double number = json.get<double>();
  if (std::abs(number) > std::numeric_limits<Float>::max()) return std::nullopt;
  return static_cast<Float>(number);
}

template <class Whole>
std::optional<Whole> wholeFrom(const nlohmann::json& json) {
  using Limits = std::numeric_limits<Whole>;
  if (json.is_number_unsigned()) {
    const auto number = json.get<std::uint64_t>();
    if (number <= static_cast<std::uint64_t>(Limits::max())) return static_cast<Whole>(number);
  } else if (json.is_number_integer() && std::is_signed_v<Whole>) {
    const auto number = json.get<std::int64_t>();
    if (number >= static_cast<std::int64_t>(Limits::min())) return static_cast<Whole>(number);
  }
  return std::nullopt;
}

template <class Element>
std::optional<Element> elementFrom(const nlohmann::json& json) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return textFrom(json);
  } else if constexpr (std::is_same_v<Element, bool>) {
    return json.is_boolean() ? std::optional<bool>(json.get<bool>()) : std::nullopt;
  } else if constexpr (std::is_floating_point_v<Element>) {
    return floatFrom<Element>(json);
  } else {
    return wholeFrom<Element>(json);
  }
}

template <class Element>
boost::any vectorFrom(std::string_view text) {
  const auto json = nlohmann::json::parse(text, nullptr, false);
  if (!json.is_array()) return {};
  std::vector<Element> elements;
  elements.reserve(json.size());
  for (const nlohmann::json& item : json) {
    std::optional<Element> element = elementFrom<Element>(item);
    if (!element) return {};
    elements.push_back(std::move(*element));
  }
  return elements;
}

}  // namespace

void bindColumn(SqliteStatement& statement, int parameter, const ColumnValue& column) {
  if (column.isBlob) {
    statement.bindBlob(parameter, column.bytes);
  } else {
    statement.bindText(parameter, column.bytes);
  }
}

ColumnValue columnFromNarrow(const std::string& narrow) {
  if (std::optional<std::string> utf8 = exactUtf8(narrow)) return {false, std::move(*utf8)};
  return {true, narrow};
}

std::optional<std::string> narrowFromColumn(std::string_view bytes, bool isBlob) {
  if (isBlob) return std::string(bytes);
  // A truncated page reads as zeros.
  if (bytes.find('\0') != std::string_view::npos) return std::nullopt;
  return base::narrowFromUtf8(bytes);
}

ColumnValue columnFromValue(const boost::any& value) {
  ColumnValue column{false, {}};
  boostany::withTypeOfKind(boostany::kindOfValue(value), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    const Type& typed = *boost::unsafe_any_cast<Type>(&value);
    if constexpr (std::is_same_v<Type, std::string>) {
      column = columnFromNarrow(typed);
    } else if constexpr (boostany::kIsVector<Type>) {
      nlohmann::json array = nlohmann::json::array();
      for (const boostany::ElementOf<Type>& element : typed) array.push_back(jsonOf(element));
      column.bytes = array.dump();
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
