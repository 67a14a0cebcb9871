// Reading changes by other processes at once. An option of the service beside the contract: a host
// may leave it out. Any thread.
#pragma once

#include <boost/shared_ptr.hpp>

#include "base/export.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// Brings into the tree of `entry` all changes that other processes of the user had made before the
// call: they can be read when it returns, and their events are waiting for delivery. Asks the
// database one question if there are none. A level on a cluster, and the files of a level, have no
// such question: what this process has received of them is brought in. Throws UnreadableStore if
// the database cannot be asked, and NoSuchNode for null.
SETTINGS_HOST_OPTION void synchronize(const boost::shared_ptr<Settings>& entry);

}  // namespace settings
}  // namespace zlutil
