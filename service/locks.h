// Locks, which settings files of the workgroup and factory levels set on keys and nodes: the values
// of the levels above the file's are kept and have no effect, and cannot be changed. Of several
// locks, here and at the nodes above, that of the lowest level counts. Settings files are read when
// the tree is made, so a lock stays as long as the tree. An option of the service beside the
// contract: a host may leave these functions out. Any thread.
#pragma once

#include <boost/shared_ptr.hpp>
#include <optional>
#include <string>

#include "base/export.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// Texts are standard UTF-8.
struct SettingLock {
  std::string path;    // of the entry that has the lock: this one or a node above it
  std::string level;   // of the file
  std::string reason;  // as the file says; may be empty
  std::string source;  // the file with line and column
};

// Returns the lock that counts for the entry; nothing if there is none, or for null.
SETTINGS_HOST_OPTION std::optional<SettingLock> lockOf(const boost::shared_ptr<Settings>& entry);

// Returns whether values of the key, or of the keys below the node, can be changed at the level:
// the level is not read-only and no lock of a lower level counts. A validator may still refuse a
// value. False for null. Throws UnSupportedLevel.
SETTINGS_HOST_OPTION bool isWritable(const boost::shared_ptr<Settings>& entry,
                                     const std::string& level);

// Returns the name of the level of the effective value; empty if the key has none. Throws NoSuchKey
// for null and NotAKeyName for a node.
SETTINGS_HOST_OPTION std::string effectiveLevelOf(const boost::shared_ptr<Settings>& key);

}  // namespace settings
}  // namespace zlutil
