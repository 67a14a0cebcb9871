// Splits a stream of bytes into lines of bounded length. One thread.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zlutil::settings::host {

class LineSplitter {
 public:
  explicit LineSplitter(std::size_t longest) : longest_(longest) {}

  // Takes the next bytes. Returns false if a line is too long.
  bool feed(std::string_view bytes) {
    while (!bytes.empty()) {
      const std::size_t end = std::min(bytes.find('\n'), bytes.size());
      if (unfinished_.size() + end > longest_) return false;
      unfinished_ += bytes.substr(0, end);
      if (end == bytes.size()) break;
      finish();
      bytes.remove_prefix(end + 1);
    }
    return true;
  }

  // Ends the last line.
  void finish() {
    if (!unfinished_.empty()) lines_.push_back(std::move(unfinished_));
    unfinished_.clear();
  }

  // Returns the whole lines since the last call, without empty ones.
  std::vector<std::string> take() { return std::exchange(lines_, {}); }

  void clear() {
    unfinished_.clear();
    lines_.clear();
  }

 private:
  const std::size_t longest_;
  std::string unfinished_;
  std::vector<std::string> lines_;
};

}  // namespace zlutil::settings::host
