// How the host makes a store that a library of its own has: libsettingsetcd, which is loaded only
// if the workgroup level is shared on a cluster.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "host/tree/store.h"

namespace zlutil::settings::host {

struct SharedStoreOptions {
  std::string address;      // "https://a:2379,https://b:2379/prefix"
  std::string credentials;  // file names as bytes for the system; "" for none
  std::string authority, certificate, key;
  std::string directory;  // of the copy for the time without the network; "" for none
  // The longest that readAll() waits for the cluster.
  std::chrono::milliseconds longestStart{2000};
  // The longest that a change waits for the cluster, with all its requests.
  std::chrono::milliseconds longestChange{10000};
  // Adds changes to a tree below its root. Called by readAll().
  std::function<void(Node& root, int level, const ExternalChanges& changes)> fill;
};

// Makes the store. The caller owns it. Throws std::invalid_argument if the address or a file is of
// no use.
using MakeSharedStore = Store*(const SharedStoreOptions& options);

inline constexpr char kStoreLibrary[] = "libsettingsetcd.so";
inline constexpr char kMakeSharedStore[] = "makeSharedStore";

}  // namespace zlutil::settings::host
