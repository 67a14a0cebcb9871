// A file descriptor, or none, that closes itself. Belongs to one thread.
#pragma once

#include <unistd.h>

namespace zlutil::settings::host {

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  // Returns false if there is no file.
  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  const int descriptor_;
};

}  // namespace zlutil::settings::host
