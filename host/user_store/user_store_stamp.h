// The stamp file of a user store. Every commit is noted in it, so that other processes notice, and
// so that whoever opens the database can tell whether it still has all that was committed: it lacks
// the end when its log has been damaged, which the database itself takes for a commit that was
// never finished.
//
// The file has kStampLines lines of the same length; transaction n stands in line n % kStampLines.
// So processes that note theirs in another order than they committed them hide no later one. Each
// line says its number twice: where it does not, it is damaged and says nothing. The file is never
// flushed: after a power cut it may lag behind the database, never the other way round, except
// where commits were not flushed either.
//
// Where the file cannot be written, others find a change when they ask the database, and a lost end
// is not noticed. One thread at a time.
#pragma once

#include <cstdint>
#include <string>

#include "host/os/file_descriptor.h"

namespace zlutil::settings::host {

inline constexpr int kStampLines = 64;

class UserStoreStamp {
 public:
  // Makes the file if there is none; follows no link.
  explicit UserStoreStamp(const std::string& file);

  void note(std::int64_t transaction);
  // The last transaction that is noted; 0 when there is none.
  std::int64_t last() const;
  // Forgets all that is noted.
  void clear();

 private:
  const FileDescriptor descriptor_;
};

}  // namespace zlutil::settings::host
