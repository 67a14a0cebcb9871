#include "host/os/flush_directory.h"

#include <fcntl.h>

#include "host/os/file_descriptor.h"

namespace zlutil::settings::host {

bool flushDirectory(const std::string& directory) {
  const FileDescriptor descriptor(
      open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return descriptor && fsync(descriptor.get()) == 0;
}

}  // namespace zlutil::settings::host
