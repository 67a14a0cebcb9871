#include "values/value_kinds.h"

#include <array>

namespace zlutil {
namespace boostany {
namespace {

constexpr std::array<std::string_view, kLastKind + 1> kNames = {
    "none",      "string",  "boolean", "byte",    "ubyte",    "short",  "ushort",
    "int",       "uint",    "long",    "ulong",   "float",    "double", "string[]",
    "boolean[]", "byte[]",  "ubyte[]", "short[]", "ushort[]", "int[]",  "uint[]",
    "long[]",    "ulong[]", "float[]", "double[]"};

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
  return kNames[kind >= kFirstKind && kind <= kLastKind ? kind : kNoValue];
}

std::optional<int> kindOfName(std::string_view name) {
  for (int kind = kFirstKind; kind <= kLastKind; ++kind) {
    if (kNames[kind] == name) return kind;
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
