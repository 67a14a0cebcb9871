#include "host/tree/standard_validators.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "host/tree/decimal.h"
#include "values/value_kinds.h"
#include "values/value_text.h"

namespace zlutil::settings::host {
namespace {

using Reason = boost::optional<std::string>;

constexpr std::string_view kPackage = "com.velonix.services.settings.validators.";

std::string_view stripped(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  const std::size_t last = text.find_last_not_of(" \t\r\n") + 1;
  return text.substr(first, last > first ? last - first : 0);
}

// The bounds of "min..max", either of which may be missing.
class Bounds {
 public:
  // Returns nothing if the text is not of that form, or the range is empty.
  static std::optional<Bounds> parse(const std::string& text) {
    const std::size_t dots = text.find("..");
    if (dots == std::string::npos) return std::nullopt;
    Bounds bounds;
    bounds.text_ = text;
    if (!read(text.substr(0, dots), bounds.min_) || !read(text.substr(dots + 2), bounds.max_)) {
      return std::nullopt;
    }
    if (bounds.min_ && bounds.max_ && *bounds.max_ < *bounds.min_) return std::nullopt;
    return bounds;
  }

  bool contain(const Decimal& number) const {
    return !(min_ && number < *min_) && !(max_ && *max_ < number);
  }
  bool hasMin() const { return min_.has_value(); }
  bool hasMax() const { return max_.has_value(); }
  const std::string& text() const { return text_; }

 private:
  static bool read(std::string_view text, std::optional<Decimal>& bound) {
    text = stripped(text);
    if (text.empty()) return true;
    bound = Decimal::parse(text);
    return bound.has_value();
  }

  std::optional<Decimal> min_, max_;
  std::string text_;
};

Reason noBounds(const std::string& text) {
  return "\"" + text + "\" is not of the form min..max, such as 1..72";
}

template <class Element>
Reason problemOutside(const Bounds& bounds, const Element& element) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return element + " is not a number";
  } else if constexpr (std::is_same_v<Element, bool>) {
    return std::string(element ? "true" : "false") + " is not a number";
  } else {
    const std::string text = *boostany::textOfValue<Element>(element);
    bool isInside = false;
    if constexpr (std::is_floating_point_v<Element>) {
      if (std::isinf(element)) isInside = element > 0 ? !bounds.hasMax() : !bounds.hasMin();
    }
    const std::optional<Decimal> number = Decimal::parse(text);
    if (isInside || (number && bounds.contain(*number))) return boost::none;
    return text + " is outside " + bounds.text();
  }
}

template <class Element>
Reason problemOfChoice(const std::string& choices, const Element& element) {
  std::string text;
  if constexpr (std::is_same_v<Element, std::string>) {
    text = element;
  } else {
    text = *boostany::textOfValue<Element>(element);
  }
  std::string listed;
  for (std::size_t begin = 0; begin <= choices.size();) {
    const std::size_t end = std::min(choices.find('|', begin), choices.size());
    const std::string choice = choices.substr(begin, end - begin);
    if (choice == text) return boost::none;
    listed += (begin == 0 ? "" : ", ") + choice;
    begin = end + 1;
  }
  return "\"" + text + "\" is none of " + listed;
}

// Returns the problem of the first element that has one; `judge` takes an element.
template <class Type, class Judge>
Reason firstProblem(const Type& value, const Judge& judge) {
  if constexpr (!boostany::kIsVector<Type>) {
    return judge(value);
  } else {
    for (std::size_t i = 0; i < value.size(); ++i) {
      const boostany::ElementOf<Type> element = value[i];
      if (const Reason problem = judge(element)) {
        return "element " + std::to_string(i) + ": " + *problem;
      }
    }
    return boost::none;
  }
}

template <class Type>
Reason problemOfLength(const Bounds& bounds, const Type& value) {
  std::size_t length = 0;
  if constexpr (std::is_same_v<Type, std::string>) {
    // A character beyond the first 65,536 is two units.
    for (const char16_t unit : base::to_ustring(value)) length += (unit & 0xFC00) != 0xDC00;
  } else if constexpr (boostany::kIsVector<Type>) {
    length = value.size();
  } else {
    return *boostany::textOfValue<Type>(value) + " is neither a text nor an array";
  }
  if (bounds.contain(*Decimal::parse(std::to_string(length)))) return boost::none;
  return "the length " + std::to_string(length) + " is outside " + bounds.text();
}

}  // namespace

std::optional<Reason> judgedWithoutJava(const JValidator& validator, const boost::any& value) {
  const std::string_view className = validator.first();
  if (className.substr(0, kPackage.size()) != kPackage) return std::nullopt;
  const std::string_view name = className.substr(kPackage.size());
  const std::string& argument = validator.second();
  std::optional<Reason> judgement;
  boostany::withTypeOfKind(boostany::kindOfType(value.type()), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    using Element = boostany::ElementOf<Type>;
    const Type& typed = *boost::any_cast<Type>(&value);
    const std::optional<Bounds> bounds = Bounds::parse(argument);
    if (name == "Range") {
      judgement = bounds ? firstProblem(typed,
                                        [&](const Element& element) {
                                          return problemOutside<Element>(*bounds, element);
                                        })
                         : noBounds(argument);
    } else if (name == "Length") {
      judgement = bounds ? problemOfLength(*bounds, typed) : noBounds(argument);
    } else if (name == "Choice" && !std::is_floating_point_v<Element>) {
      // Java and C++ write floating-point numbers differently.
      judgement = firstProblem(typed, [&](const Element& element) {
        return problemOfChoice<Element>(argument, element);
      });
    }
  });
  return judgement;
}

}  // namespace zlutil::settings::host
