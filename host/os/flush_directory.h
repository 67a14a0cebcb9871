// Flushes directories: a file that was made, renamed or removed is so on the disk only after its
// directory was flushed. Any thread.
#pragma once

#include <string>

namespace zlutil::settings::host {

// Flushes the directory's entries to the disk. Returns false, with errno set, if that fails. The
// name is bytes for the system; "" is the current directory.
bool flushDirectory(const std::string& directory);

}  // namespace zlutil::settings::host
