// The read-only store of a level whose settings are the files `*.xml` of a directory, read in name
// order. A file that is broken, or that contradicts an earlier one, is left out whole, with one
// line on standard error that says where and why; the other files are read. A directory that does
// not exist is an empty level, and is reported on standard error if it is required.
#pragma once

#include "host/tree/store.h"

namespace zlutil::settings::host {

class XmlDirectoryStore final : public Store {
 public:
  // `directory` is bytes for the system; empty if there is none.
  explicit XmlDirectoryStore(const std::string& directory, bool isRequired = false);

  void readAll(Node& root, int level) override;
  bool apply(const Changes& changes, const Receiver& receive) override;
  void catchUp(const Receiver&) override {}
  void synchronize(const Receiver&) override {}
  bool keepsChanges() const override { return true; }
  bool isCurrent() override { return true; }
  const std::string& readOnlyReason() const override { return readOnlyReason_; }
  std::vector<std::string> unreadable() const override { return unreadable_; }
  // Reads the files again, for line and column.
  std::string sourceOf(const std::string& path) const override;
  // The files are read once; they are not watched.
  bool watch(const Watcher&) override { return true; }
  void look() override {}

 private:
  const std::string directory_;
  const bool isRequired_;
  const std::string readOnlyReason_;
  std::vector<std::string> unreadable_;  // the mistakes of those left out; constant likewise
  std::vector<std::string> files_;  // that were read and not left out; constant after readAll()
};

}  // namespace zlutil::settings::host
