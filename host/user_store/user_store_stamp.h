// The stamp file of a user store. Every commit notes its revision in it. Other processes thus
// notice the commit, and opening the database can tell whether the last commits are missing: SQLite
// takes the damaged end of a log for a commit that was never finished.
//
// The file has kStampLines lines of the same length; revision n is in line n % kStampLines, so
// processes may note their revisions in any order. A line has its number twice; if the two differ,
// the line is damaged and ignored. The file is never flushed: after a power cut it may lag behind
// the database, but it is never ahead of it.
//
// If the file cannot be written, other processes find a commit when they ask the database, and a
// lost end is not noticed. One thread at a time.
#pragma once

#include <cstdint>
#include <string>

#include "host/os/file_descriptor.h"

namespace zlutil::settings::host {

inline constexpr int kStampLines = 64;

class UserStoreStamp {
 public:
  // Makes the file if there is none. Follows no link.
  explicit UserStoreStamp(const std::string& file);

  void note(std::int64_t revision);
  // Returns the last revision; 0 if there is none.
  std::int64_t last() const;
  // Removes all revisions.
  void clear();

 private:
  const FileDescriptor descriptor_;
};

}  // namespace zlutil::settings::host
