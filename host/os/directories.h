// The directories that a context's settings come from, as the process environment names them at the
// moment of the call. Names are bytes for the system. Any thread, but not while another thread
// changes the environment.
#pragma once

#include <string>

namespace zlutil::settings::host {

struct Directories {
  std::string user;       // SETTINGS_USERDIR, else velonix/settings in the user's configuration
  std::string workgroup;  // SETTINGS_WORKGROUPDIR; empty when there is none
  std::string factory;    // SETTINGS_FACTORYDIR, else factory/ beside this library
  bool isFactoryAskedFor = false;  // by SETTINGS_FACTORYDIR
};

// A variable that is set to nothing counts as not set.
Directories currentDirectories();

}  // namespace zlutil::settings::host
