// Chooses the store of the workgroup level, as the process environment names it at the moment of
// the call: a cluster (SETTINGS_WORKGROUP), else a directory of files. Any thread, but not while
// another thread changes the environment.
#pragma once

#include <memory>

#include "host/os/directories.h"
#include "host/tree/store.h"

namespace zlutil::settings::host {

// Reports on standard error if the cluster's store cannot be made. The level is then empty and
// read-only.
std::shared_ptr<Store> makeWorkgroupStore(const Directories& directories);

}  // namespace zlutil::settings::host
