// The earlier states of a level: its history, and copies of its whole content. An option of a
// store. The tree calls it as it calls the store. Every operation throws StoreFailure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/tree/store.h"

namespace zlutil::settings::host {

// One change of a past commit: a value (PutValue) or a definition (DefineEntry) before and after
// it. Nothing stands for absence.
struct PastChange {
  std::string path;
  std::optional<Change> before, after;
};

// One commit. Texts are narrow.
struct PastCommit {
  std::int64_t number = 0;  // grows from commit to commit
  std::int64_t time = 0;    // microseconds since 1970, by the clock of its process
  std::int64_t process = 0;
  std::string program, comment;
  std::vector<PastChange> changes;  // in their order
};

class StoreArchive {
 public:
  virtual ~StoreArchive() = default;

  // Returns the commits from this number on that the history still has, oldest first.
  virtual std::vector<PastCommit> commitsFrom(std::int64_t number) = 0;

  // Writes a copy of the content to the file, which it replaces in one step. A name is bytes for
  // the system.
  virtual void backUp(const std::string& file) = 0;

  // Makes the content that of a copy, as one commit; it reaches the tree as external changes. Keeps
  // a copy of the content before that, and returns its name.
  virtual std::string restore(const std::string& file) = 0;
};

}  // namespace zlutil::settings::host
