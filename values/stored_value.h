// Comparison and copies of the values that the tree stores. Pure functions; any thread.
#pragma once

#include <boost/any.hpp>

namespace zlutil::boostany {

// The kind (values/value_kinds.h) of the value; kNoValue for an empty one or for a type outside the
// list.
int kindOfValue(const boost::any& value);

// Whether both are empty, or of the same kind and equal. Floating-point values compare by their
// bits: a NaN equals itself, and 0.0 does not equal -0.0.
bool sameValue(const boost::any& left, const boost::any& right);

// A copy whose code is the host's own. The value that a caller hands in is made of code of the
// caller's library, which may be unmapped while the tree still has the value.
boost::any ownCopy(const boost::any& value);

}  // namespace zlutil::boostany
