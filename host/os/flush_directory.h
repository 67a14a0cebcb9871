// Making the names of files last: one that was made, renamed or removed is on the disk once its
// directory is. Any thread.
#pragma once

#include <string>

namespace zlutil::settings::host {

// Has the directory's entries written to the disk; false, with errno set, when that fails. The name
// is bytes for the system; "" is the current directory.
bool flushDirectory(const std::string& directory);

}  // namespace zlutil::settings::host
