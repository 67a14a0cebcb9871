// A directory for the files of one test, removed with its content by the destructor.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace test {

class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    std::string pattern = (parent / "settings.XXXXXX").string();
    if (!mkdtemp(&pattern[0])) throw std::runtime_error("cannot make " + pattern);
    path_ = pattern;
  }
  // Renames the directory first, because a store that is still open may make files in it.
  ~TemporaryDirectory() {
    std::error_code ignored;  // files that are left do no harm
    const std::filesystem::path removed = path_.string() + ".removed";
    std::filesystem::rename(path_, removed, ignored);
    std::filesystem::remove_all(removed, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string path() const { return path_.string(); }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

  // Writes a file and returns its path.
  std::string write(const std::string& name, std::string_view content) const {
    std::ofstream(file(name), std::ios::binary) << content;
    return file(name);
  }

  std::string read(const std::string& name) const {
    std::ifstream stream(file(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace test
