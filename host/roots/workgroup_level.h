// Chooses the store of the workgroup level: a cluster, else a directory of files. Any thread, but
// not while another thread changes the environment, which has the options of a cluster.
#pragma once

#include <memory>

#include "host/os/directories.h"
#include "host/tree/store.h"

namespace zlutil::settings::host {

// `cluster` is the cluster's address; "" stands for the directory. Reports (host/os/log_error.h) if
// the cluster's store cannot be made. The level is then empty and read-only.
std::shared_ptr<Store> makeWorkgroupStore(const std::string& cluster,
                                          const Directories& directories);

}  // namespace zlutil::settings::host
