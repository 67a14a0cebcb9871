// A directory for the files of one run of a benchmark, in SETTINGS_BENCH_DIR, else in /var/tmp,
// because /tmp may be in memory, where flushing costs nothing.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace bench {

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    const char* const parent = std::getenv("SETTINGS_BENCH_DIR");
    path_ = std::string(parent ? parent : "/var/tmp") + "/settings-bench.XXXXXX";
    if (!mkdtemp(&path_[0])) throw std::runtime_error("cannot make " + path_);
  }
  // Stores in the directory are still open and may make files, so it is renamed first.
  ~TemporaryDirectory() {
    std::error_code ignored;  // files that are left do no harm
    std::filesystem::rename(path_, path_ + ".removed", ignored);
    std::filesystem::remove_all(path_ + ".removed", ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace bench
