#include "values/value_json.h"

#include <algorithm>

#include "base/text.h"
#include "values/exact_text.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::boostany {
namespace {

constexpr char kBytes[] = "bytes";

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
}

template <class Element>
nlohmann::json jsonOf(const Element& element) {
  if constexpr (std::is_same_v<Element, std::string>) {
    if (std::optional<std::string> utf8 = exactUtf8(element)) return std::move(*utf8);
    std::string hex;
    for (const char c : element) detail::appendHex(hex, static_cast<unsigned char>(c), 2);
    nlohmann::json bytes;
    bytes[kBytes] = hex;
    return bytes;
  } else if constexpr (std::is_floating_point_v<Element>) {
    if (!std::isfinite(element)) return exactText(element);
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
    const auto number = valueFromExactText<Float>(json.get_ref<const std::string&>());
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
boost::any vectorFrom(const nlohmann::json& json) {
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

std::optional<std::string> exactUtf8(const std::string& narrow) {
  if (isPlain(narrow)) return narrow;
  std::optional<std::string> utf8 = base::utf8FromNarrow(narrow);
  if (!utf8 || utf8->find('\0') != std::string::npos) return std::nullopt;
  return base::narrowFromUtf8(*utf8) == narrow ? utf8 : std::nullopt;
}

nlohmann::json jsonOfValue(const boost::any& value) {
  nlohmann::json json;
  withTypeOfKind(kindOfValue(value), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    const Type& typed = *boost::unsafe_any_cast<Type>(&value);
    if constexpr (kIsVector<Type>) {
      json = nlohmann::json::array();
      for (const ElementOf<Type>& element : typed) json.push_back(jsonOf(element));
    } else {
      json = jsonOf(typed);
    }
  });
  return json;
}

boost::any valueFromJson(int kind, const nlohmann::json& json) {
  boost::any value;
  withTypeOfKind(kind, [&](auto tag) {
    using Type = typename decltype(tag)::type;
    if constexpr (kIsVector<Type>) {
      value = vectorFrom<ElementOf<Type>>(json);
    } else if (auto scalar = elementFrom<Type>(json)) {
      value = std::move(*scalar);
    }
  });
  return value;
}

}  // namespace zlutil::boostany
