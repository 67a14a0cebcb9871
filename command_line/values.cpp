#include "command_line/values.h"

#include <cmath>

#include "base/text.h"
#include "command_line/program_error.h"
#include "values/value_kinds.h"
#include "values/value_text.h"

namespace command_line {
namespace {

using namespace zlutil::boostany;

// Calls `use(elements)` with the value's elements, one for a scalar, as a vector.
template <class Use>
void withElements(const boost::any& value, const Use& use) {
  withTypeOfKind(kindOfType(value.type()), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    const Type& typed = *boost::any_cast<Type>(&value);
    if constexpr (kIsVector<Type>) {
      use(typed);
    } else {
      use(std::vector<Type>(1, typed));
    }
  });
}

bool isArray(const boost::any& value) {
  bool is = false;
  withTypeOfKind(kindOfType(value.type()),
                 [&](auto tag) { is = kIsVector<typename decltype(tag)::type>; });
  return is;
}

// A text with half a surrogate pair is shown with a replacement character.
template <class Element>
std::string textOf(const Element& element) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return base::displayFromNarrow(element);
  } else {
    return *textOfValue<Element>(element);
  }
}

template <class Element>
Json jsonOfElement(const Element& element) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return textOf(element);
  } else if constexpr (std::is_floating_point_v<Element>) {
    if (!std::isfinite(element)) return textOf(element);
    // Through the shortest text, so that a float does not show the digits of a double.
    return Json::parse(textOf(element));
  } else {
    return element;
  }
}

}  // namespace

std::vector<std::string> textsOf(const boost::any& value) {
  std::vector<std::string> texts;
  withElements(value, [&](const auto& elements) {
    using Element = typename std::decay_t<decltype(elements)>::value_type;
    for (const Element& element : elements) texts.push_back(textOf<Element>(element));
  });
  return texts;
}

std::string lineOf(const boost::any& value) {
  std::string line;
  for (const std::string& text : textsOf(value)) {
    line += (line.empty() ? "" : ", ") + base::withControlsEscaped(text);
  }
  return isArray(value) ? "[" + line + "]" : line;
}

Json jsonOf(const boost::any& value) {
  Json all = Json::array();
  withElements(value, [&](const auto& elements) {
    using Element = typename std::decay_t<decltype(elements)>::value_type;
    for (const Element& element : elements) all.push_back(jsonOfElement<Element>(element));
  });
  if (isArray(value)) return all;
  return all.empty() ? Json() : all.front();
}

std::string typeNameOf(int kind) {
  return kind == kNoValue ? std::string() : std::string(kindName(kind));
}

int kindOfTypeName(const std::string& name) {
  if (const std::optional<int> kind = kindOfName(name)) return *kind;
  throw ProgramError(ExitStatus::kWrongUsage, "There is no type \"" + name + "\".",
                     "The types are string, boolean, byte, ubyte, short, ushort, int, uint, long, "
                     "ulong, float and double, each also with [] for an array.");
}

boost::any valueOf(int kind, const std::vector<std::string>& texts) {
  boost::any value;
  withTypeOfKind(kind, [&](auto tag) {
    using Type = typename decltype(tag)::type;
    using Element = ElementOf<Type>;
    std::vector<Element> elements;
    for (const std::string& text : texts) {
      const std::optional<Element> element = valueFromText<Element>(text);
      if (!element) {
        throw ProgramError(
            ExitStatus::kWrongUsage,
            "\"" + text + "\" is not a value of the type " + std::string(kindName(kind)) + ".",
            "Numbers are decimal digits, booleans true or false.");
      }
      elements.push_back(*element);
    }
    if constexpr (kIsVector<Type>) {
      value = Type(elements.begin(), elements.end());
    } else if (elements.size() == 1) {
      value = Type(elements.front());
    } else {
      throw ProgramError(ExitStatus::kWrongUsage,
                         "A value of the type " + std::string(kindName(kind)) +
                             " is one text, not " + std::to_string(elements.size()) + ".",
                         "Put it into quotation marks if it has spaces.");
    }
  });
  return value;
}

}  // namespace command_line
