#include "host/tree/standard_validators.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "host/tree/decimal.h"
#include "service/constraints.h"
#include "values/value_kinds.h"
#include "values/value_text.h"

namespace zlutil::settings::host {
namespace {

using Reason = boost::optional<std::string>;

constexpr std::string_view kPackage = constraints::kPackage;

// Returns the name of the class of the standard package; nothing if it is in another package.
std::optional<std::string_view> standardName(const JValidator& validator) {
  const std::string_view className = validator.first();
  if (className.substr(0, kPackage.size()) != kPackage) return std::nullopt;
  return className.substr(kPackage.size());
}

// Calls use(choice) for each part of the text between vertical bars, until it returns true.
template <class Use>
void forEachChoice(const std::string& choices, const Use& use) {
  for (std::size_t begin = 0; begin <= choices.size();) {
    const std::size_t end = std::min(choices.find('|', begin), choices.size());
    if (use(choices.substr(begin, end - begin))) return;
    begin = end + 1;
  }
}

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
bool isChoice(const std::string& choice, const Element& element, const std::string& text) {
  if constexpr (std::is_floating_point_v<Element>) {
    // The same number may be written in several ways.
    const std::optional<Element> number = boostany::valueFromText<Element>(choice);
    return number && (*number == element || (std::isnan(*number) && std::isnan(element)));
  } else {
    return choice == text;
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
  bool isFound = false;
  forEachChoice(choices, [&](const std::string& choice) {
    isFound = isChoice(choice, element, text);
    listed += (listed.empty() ? "" : ", ") + choice;
    return isFound;
  });
  if (isFound) return boost::none;
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

std::optional<Reason> judged(const JValidator& validator, const boost::any& value) {
  const std::optional<std::string_view> name = standardName(validator);
  if (!name) return std::nullopt;
  const std::string& argument = validator.second();
  std::optional<Reason> judgement;
  boostany::withTypeOfKind(boostany::kindOfType(value.type()), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    using Element = boostany::ElementOf<Type>;
    const Type& typed = *boost::any_cast<Type>(&value);
    if (*name == "Choice") {
      judgement = firstProblem(typed, [&](const Element& element) {
        return problemOfChoice<Element>(argument, element);
      });
      return;
    }
    if (*name != "Range" && *name != "Length") return;
    const std::optional<Bounds> bounds = Bounds::parse(argument);
    if (!bounds) {
      judgement = noBounds(argument);
    } else if (*name == "Range") {
      judgement = firstProblem(
          typed, [&](const Element& element) { return problemOutside<Element>(*bounds, element); });
    } else {
      judgement = problemOfLength(*bounds, typed);
    }
  });
  return judgement;
}

std::optional<std::string> mistakeOf(const JValidator& validator, int kind) {
  const std::optional<std::string_view> name = standardName(validator);
  if (!name) return std::nullopt;
  const std::string& argument = validator.second();
  if (*name == "Range" || *name == "Length") {
    if (!Bounds::parse(argument)) return *noBounds(argument);
  } else if (*name == "Choice") {
    std::optional<std::string> mistake;
    boostany::withTypeOfKind(kind, [&](auto tag) {
      using Element = boostany::ElementOf<typename decltype(tag)::type>;
      forEachChoice(argument, [&](const std::string& choice) {
        if (!boostany::valueFromText<Element>(choice)) {
          mistake = "the choice \"" + choice + "\" is not a value of the key's type";
        }
        return mistake.has_value();
      });
    });
    return mistake;
  } else if (*name != "Pattern") {
    return "there is no validator " + validator.first() +
           ", expected Range, Choice, Length or Pattern in that package";
  }
  return std::nullopt;
}

std::string constraintText(const JValidator& validator) {
  const std::optional<std::string_view> name = standardName(validator);
  if (name == "Range") return "range " + validator.second();
  if (name == "Length") return "length " + validator.second();
  if (name == "Choice") return "choices";
  return "java " + validator.first() + ' ' + validator.second();
}

std::vector<std::string> choicesOf(const JValidator& validator) {
  std::vector<std::string> choices;
  if (standardName(validator) != "Choice") return choices;
  forEachChoice(validator.second(), [&](const std::string& choice) {
    choices.push_back(choice);
    return false;
  });
  return choices;
}

}  // namespace zlutil::settings::host
