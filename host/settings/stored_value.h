// Comparison of the values that the tree stores. Pure functions; any thread.
#pragma once

#include <boost/any.hpp>

namespace zlutil::settings::host {

// The kind (values/value_kinds.h) of the value; kNoValue for an empty one or for a type outside the
// list.
int kindOfValue(const boost::any& value);

// Whether both are empty, or of the same kind and equal. Floating-point values compare by their
// bits: a NaN equals itself, and 0.0 does not equal -0.0.
bool sameValue(const boost::any& left, const boost::any& right);

}  // namespace zlutil::settings::host
