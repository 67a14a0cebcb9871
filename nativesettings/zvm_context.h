// From an engine session, as Java names it, to the runtime context whose settings it uses. Any
// thread.
#pragma once

#include "service/context.h"

namespace nativezvm {

// The context of the engine session; the blessed context for the undefined session, for an unknown
// one and for one without a context. boost::numeric::negative_overflow for a negative number.
zlutil::contextmgr::ZcrID getZcrForHandle(long zvmHandle);

}  // namespace nativezvm
