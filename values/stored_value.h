// Comparison and copies of stored values. Pure functions; any thread.
#pragma once

#include <boost/any.hpp>

namespace zlutil::boostany {

// Returns the kind of the value; kNoValue for an empty one or for a type outside the list.
int kindOfValue(const boost::any& value);

// Returns whether both are empty, or of the same kind and equal. Floating-point values compare by
// their bits: a NaN equals itself, and 0.0 does not equal -0.0.
bool sameValue(const boost::any& left, const boost::any& right);

// Returns a copy whose code is the host's own. The code of a value is that of the library which
// made it, and that library may be unmapped while the tree still has the value.
boost::any ownCopy(const boost::any& value);

// Does the same by moving the content out of `value`, which keeps its type.
boost::any ownMove(boost::any& value);

}  // namespace zlutil::boostany
