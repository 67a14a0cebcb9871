// The directories of a context's settings, as the process environment names them at the moment of
// the call. Names are bytes for the system. Any thread, but not while another thread changes the
// environment.
#pragma once

#include <string>

namespace zlutil::settings::host {

struct Directories {
  std::string user;       // SETTINGS_USERDIR, else velonix/settings in the user's configuration
  std::string workgroup;  // SETTINGS_WORKGROUPDIR, else empty
  std::string factory;    // SETTINGS_FACTORYDIR, else factory/ beside this library
  bool isFactoryRequired = false;  // named by SETTINGS_FACTORYDIR
  bool isWorkgroupRequired = true;
};

// Treats an empty variable as one that is not set.
Directories currentDirectories();

}  // namespace zlutil::settings::host
