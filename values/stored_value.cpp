#include "values/stored_value.h"

#include <cstring>
#include <utility>

#include "values/value_kinds.h"

namespace zlutil::boostany {
namespace {

template <class Type>
bool equal(const Type& left, const Type& right) {
  using Element = ElementOf<Type>;
  if constexpr (!std::is_floating_point_v<Element>) {
    return left == right;
  } else if constexpr (kIsVector<Type>) {
    return left.size() == right.size() &&
           (left.empty() ||
            std::memcmp(left.data(), right.data(), left.size() * sizeof(Element)) == 0);
  } else {
    return std::memcmp(&left, &right, sizeof(Type)) == 0;
  }
}

}  // namespace

int kindOfValue(const boost::any& value) { return kindOfType(value.type()); }

bool sameValue(const boost::any& left, const boost::any& right) {
  if (left.type() != right.type()) return false;
  bool same = true;
  withTypeOfKind(kindOfValue(left), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    same = equal(*boost::unsafe_any_cast<Type>(&left), *boost::unsafe_any_cast<Type>(&right));
  });
  return same;
}

boost::any ownCopy(const boost::any& value) {
  boost::any copy;
  withTypeOfKind(kindOfValue(value), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    copy = *boost::unsafe_any_cast<Type>(&value);
  });
  return copy;
}

boost::any ownMove(boost::any& value) {
  boost::any moved;
  withTypeOfKind(kindOfValue(value), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    moved = std::move(*boost::unsafe_any_cast<Type>(&value));
  });
  return moved;
}

}  // namespace zlutil::boostany
