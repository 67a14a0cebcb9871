// The one list of the kinds of value that a setting may have. Twelve element types, each as a
// single value and as a vector, make 24 kinds; kind 0 means no value.
//
//   kind 1 .. 12    the element types in the order of kElements
//   kind 13 .. 24   vectors of them, in the same order
//
// The names, the variant, the conversions to Java and to text, and the cases of the tests of values
// are generated from the list. These files repeat it:
//
//   values/java/class_records.h            a type without a record does not compile
//   values/java/primitive_arrays.h         a type without a primitive does not compile
//   ValueKinds.java                        the test Values.JavaHasTheSameKinds compares the lists
//   PrimitiveArrays.java, BoundKey.java    java.ValueRoundTripTest has values of every kind
//   values/value_variant.h                 a list of types without room does not compile
//   docs/settings.xsd                      nothing compares it
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "base/export.h"

namespace zlutil {
namespace boostany {

// An element type, with its name in settings files and messages.
template <class Type>
struct ElementKind {
  std::string_view name;
};

inline constexpr std::tuple kElements = {
    ElementKind<std::string>{"string"},
    ElementKind<bool>{"boolean"},
    ElementKind<signed char>{"byte"},
    ElementKind<unsigned char>{"ubyte"},
    ElementKind<short>{"short"},
    ElementKind<unsigned short>{"ushort"},
    ElementKind<int>{"int"},
    ElementKind<unsigned int>{"uint"},
    ElementKind<long>{"long"},
    ElementKind<unsigned long>{"ulong"},
    ElementKind<float>{"float"},
    ElementKind<double>{"double"},
};

template <class... Types>
struct TypeList {
  static constexpr std::size_t kSize = sizeof...(Types);
};

namespace detail {

template <class... Types>
TypeList<Types...> typesOf(const std::tuple<ElementKind<Types>...>&);

}  // namespace detail

using ElementTypes = decltype(detail::typesOf(kElements));

inline constexpr int kElementKinds = static_cast<int>(ElementTypes::kSize);
inline constexpr int kNoValue = 0;
inline constexpr int kFirstKind = 1;
inline constexpr int kLastKind = 2 * kElementKinds;

namespace detail {

template <class Type, class List>
struct PositionOf;
template <class Type, class... Rest>
struct PositionOf<Type, TypeList<Type, Rest...>> : std::integral_constant<int, 0> {};
template <class Type, class First, class... Rest>
struct PositionOf<Type, TypeList<First, Rest...>>
    : std::integral_constant<int, 1 + PositionOf<Type, TypeList<Rest...>>::value> {};

template <int Position, class List>
struct TypeAt;
template <class First, class... Rest>
struct TypeAt<0, TypeList<First, Rest...>> {
  using type = First;
};
template <int Position, class First, class... Rest>
struct TypeAt<Position, TypeList<First, Rest...>> : TypeAt<Position - 1, TypeList<Rest...>> {};

template <class Type>
struct KindOf : std::integral_constant<int, kFirstKind + PositionOf<Type, ElementTypes>::value> {};
template <class Element>
struct KindOf<std::vector<Element>>
    : std::integral_constant<int, kElementKinds + KindOf<Element>::value> {};

template <class Type, class... Types>
constexpr bool isOneOf(TypeList<Types...>) {
  return (std::is_same_v<Type, Types> || ...);
}

template <class Type>
struct ElementOf {
  using type = Type;
};
template <class Element>
struct ElementOf<std::vector<Element>> {
  using type = Element;
};

template <int Kind>
struct TypeOfKind {
  using element = typename TypeAt<(Kind - kFirstKind) % kElementKinds, ElementTypes>::type;
  using type = std::conditional_t<(Kind > kElementKinds), std::vector<element>, element>;
};

}  // namespace detail

// The kind of a native type, as a constant; does not compile for a type outside the list.
template <class Type>
inline constexpr int kKindOf = detail::KindOf<Type>::value;

// The native type of a kind in 1 .. 24.
template <int Kind>
using TypeOfKind = typename detail::TypeOfKind<Kind>::type;

template <class Type>
using ElementOf = typename detail::ElementOf<Type>::type;

template <class Type>
inline constexpr bool kIsVector = !std::is_same_v<Type, ElementOf<Type>>;

// Whether a type is one of the 24.
template <class Type>
inline constexpr bool kHasKind = detail::isOneOf<ElementOf<Type>>(ElementTypes());

// A type as a value, to hand one to a function object.
template <class Type>
struct TypeTag {
  using type = Type;
};

// Calls `visit(TypeTag<T>())` for the type of a kind known only at run time. Returns false, without
// a call, if the kind is not in 1 .. 24.
template <class Visit, int Kind = kFirstKind>
bool withTypeOfKind(int kind, Visit&& visit) {
  if constexpr (Kind > kLastKind) {
    return false;
  } else {
    if (kind != Kind) return withTypeOfKind<Visit, Kind + 1>(kind, std::forward<Visit>(visit));
    visit(TypeTag<TypeOfKind<Kind>>());
    return true;
  }
}

// Calls `visit(TypeTag<T>())` for every kind in order.
template <class Visit, int Kind = kFirstKind>
void forEachKind(Visit&& visit) {
  if constexpr (Kind <= kLastKind) {
    visit(TypeTag<TypeOfKind<Kind>>());
    forEachKind<Visit, Kind + 1>(std::forward<Visit>(visit));
  }
}

// Returns the name of a kind as settings files and messages write it, that of a vector with "[]" at
// its end; "none" for any other number. The text lives for ever.
SETTINGS_HOST_API std::string_view kindName(int kind);

// Returns the kind of that name, nothing if there is none.
SETTINGS_HOST_API std::optional<int> kindOfName(std::string_view name);

// Returns the kind of a native type known only at run time; kNoValue for a type outside the list.
SETTINGS_HOST_API int kindOfType(const std::type_info& type);

}  // namespace boostany
}  // namespace zlutil
