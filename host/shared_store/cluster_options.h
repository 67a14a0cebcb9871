// The address of a cluster and the files for its use. Plain data and pure functions, but for the
// functions that read a file; any thread.
#pragma once

#include <string>
#include <vector>

namespace zlutil::settings::host {

struct ClusterAddress {
  std::vector<std::string> members;  // such as "https://a:2379"
  std::string prefix;                // such as "/team/settings": begins with "/", does not end so

  // Returns the key of etcd below which all settings are.
  std::string keyPrefix() const { return prefix + '/'; }
};

// Reads an address such as "https://a:2379,https://b:2379/team/settings". Throws
// std::invalid_argument with the reason if it is none.
ClusterAddress parseClusterAddress(const std::string& text);

// Throws std::invalid_argument if a password would leave this machine unencrypted.
void requireSecrecy(const ClusterAddress& address);

// The user of etcd; no name if there is none.
struct Credentials {
  std::string user;
  std::string password;
};

// Reads a file of two lines, the user's name and the password. Throws std::invalid_argument with
// the reason if it cannot be read, or if anybody but its owner, who must be the user of this
// process, may.
Credentials readCredentials(const std::string& file);

// Names of files for TLS, as bytes for the system; "" if there is none.
struct TlsFiles {
  std::string authority;  // the certificates of the authorities to trust
  std::string certificate;
  std::string key;
};

}  // namespace zlutil::settings::host
