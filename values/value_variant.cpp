#include "values/value_variant.h"

#include <boost/variant/apply_visitor.hpp>
#include <boost/variant/static_visitor.hpp>

namespace zlutil {
namespace boostany {
namespace {

struct ToAny : boost::static_visitor<boost::any> {
  boost::any operator()(const boost::blank&) const { return boost::any(); }
  template <class Type>
  boost::any operator()(const Type& value) const {
    return boost::any(value);
  }
};

}  // namespace

SettingValueVariant convertAnyToVariant(const boost::any& value) {
  SettingValueVariant variant;
  withTypeOfKind(kindOfType(value.type()), [&](auto tag) {
    using Type = typename decltype(tag)::type;
    variant = *boost::unsafe_any_cast<Type>(&value);
  });
  return variant;
}

boost::any convertVariantToAny(const SettingValueVariant& value) {
  return boost::apply_visitor(ToAny(), value);
}

}  // namespace boostany
}  // namespace zlutil
