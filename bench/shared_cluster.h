// The cluster that the benchmarks of the shared store use: that of a directory of
// scripts/cluster.sh.
#pragma once

#include <fstream>
#include <string>

#include "tests/cluster/shared_tree.h"

namespace bench {

// Returns the options for a store of the cluster, as its administrator.
inline zlutil::settings::host::SharedStoreOptions optionsOf(const std::string& directory) {
  std::string members, url;
  for (std::ifstream urls(directory + "/urls"); std::getline(urls, url);) {
    members += (members.empty() ? "" : ",") + url;
  }
  zlutil::settings::host::SharedStoreOptions options = test::optionsFor(members + "/team/settings");
  options.credentials = directory + "/admin.credentials";
  options.authority = directory + "/ca.crt";
  options.longestStart = std::chrono::seconds(60);
  options.directory = directory;
  return options;
}

}  // namespace bench
