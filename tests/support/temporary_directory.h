// A directory of a test's own, removed with everything in it at the end.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace test {

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "settings.XXXXXX").string();
    if (!mkdtemp(&pattern[0])) throw std::runtime_error("cannot make " + pattern);
    path_ = pattern;
  }
  // Renames it first: a store that is still open on it must not make new files while it is being
  // emptied.
  ~TemporaryDirectory() {
    std::error_code ignored;  // what is left over does no harm
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
