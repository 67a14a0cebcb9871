// SettingValueVariant: no value, or one value of one of the 24 kinds. The variant's which() is the
// kind. In the service a value is a boost::any; the two functions convert between them.
#pragma once

#include <boost/any.hpp>
#include <boost/blank.hpp>
#include <boost/mpl/vector/vector30.hpp>
#include <boost/variant/get.hpp>
#include <boost/variant/variant.hpp>
#include <string>
#include <vector>

#include "base/export.h"
#include "values/value_kinds.h"

namespace zlutil {
namespace boostany {
namespace detail {

template <class List>
struct VariantOver;
template <class... Elements>
struct VariantOver<TypeList<Elements...>> {
  // The parameter list of boost::variant ends at 20 types; a type sequence has no such limit.
  using Sequence = boost::mpl::vector25<boost::blank, Elements..., std::vector<Elements>...>;
  using type = typename boost::make_variant_over<Sequence>::type;
};

}  // namespace detail

using SettingValueVariant = detail::VariantOver<ElementTypes>::type;

// Returns the variant that holds the value of `value`; empty (kind 0) if `value` is empty or holds
// a type outside the 24.
SETTINGS_HOST_API SettingValueVariant convertAnyToVariant(const boost::any& value);

// Returns the boost::any that holds the value of `value`; empty for an empty variant.
SETTINGS_HOST_API boost::any convertVariantToAny(const SettingValueVariant& value);

}  // namespace boostany
}  // namespace zlutil
