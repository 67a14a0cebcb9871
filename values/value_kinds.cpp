#include "values/value_kinds.h"

#include <array>

#include "base/never_destroyed.h"

namespace zlutil {
namespace boostany {
namespace {

using Names = std::array<std::string, kLastKind + 1>;

Names collectNames() {
  Names names{"none"};
  const auto add = [&names](int kind, std::string_view element) {
    names[kind] = element;
    names[kElementKinds + kind] = std::string(element) + "[]";
  };
  std::apply(
      [&](const auto&... elements) {
        int kind = kFirstKind;
        (add(kind++, elements.name), ...);
      },
      kElements);
  return names;
}

const Names& allNames() {
  static base::NeverDestroyed<Names> names(collectNames());
  return names.get();
}

using TypeInfos = std::array<const std::type_info*, kLastKind + 1>;

TypeInfos collectTypeInfos() {
  TypeInfos infos{};
  infos[kNoValue] = &typeid(void);
  forEachKind([&](auto tag) {
    using Type = typename decltype(tag)::type;
    infos[kKindOf<Type>] = &typeid(Type);
  });
  return infos;
}

}  // namespace

std::string_view kindName(int kind) {
  return allNames()[kind >= kFirstKind && kind <= kLastKind ? kind : kNoValue];
}

std::optional<int> kindOfName(std::string_view name) {
  const Names& names = allNames();
  for (int kind = kFirstKind; kind <= kLastKind; ++kind) {
    if (names[kind] == name) return kind;
  }
  return std::nullopt;
}

int kindOfType(const std::type_info& type) {
  static const TypeInfos infos = collectTypeInfos();
  for (int kind = kFirstKind; kind <= kLastKind; ++kind) {
    if (infos[kind] == &type) return kind;
  }
  // Another library may have a type_info object of its own for the same type.
  for (int kind = kFirstKind; kind <= kLastKind; ++kind) {
    if (*infos[kind] == type) return kind;
  }
  return kNoValue;
}

}  // namespace boostany
}  // namespace zlutil
