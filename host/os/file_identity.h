// The identity of the file that a name stands for at the moment: its device and inode. A value; any
// thread.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <string>

namespace zlutil::settings::host {

class FileIdentity {
 public:
  // Identifies no file.
  FileIdentity() = default;
  // `name` is bytes for the system.
  explicit FileIdentity(const std::string& name) {
    struct stat status;
    error_ = stat(name.c_str(), &status) == 0 ? 0 : errno;
    if (error_ != 0) return;
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }

  explicit operator bool() const { return error_ == 0; }
  // Returns the error number of the system if there is no file.
  int error() const { return error_; }
  bool operator==(const FileIdentity& other) const {
    return *this && other && device_ == other.device_ && inode_ == other.inode_;
  }

 private:
  int error_ = ENOENT;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace zlutil::settings::host
