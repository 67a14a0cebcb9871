// The runtime context whose settings an engine session uses. Any thread.
#pragma once

#include "service/context.h"

namespace nativezvm {

// Returns the context of the engine session; the blessed context for the undefined session, for an
// unknown one and for one without a context. Throws boost::numeric::negative_overflow for a
// negative number.
zlutil::contextmgr::ZcrID getZcrForHandle(long zvmHandle);

}  // namespace nativezvm
