// The read-only store of a level whose settings are files that an application names or has the
// content of. They are read once. A later file has the last word on a value. readAll() throws what
// readSettingsTree() throws, because the application asked for just these files.
#pragma once

#include "host/files/settings_parser.h"
#include "host/tree/store.h"

namespace zlutil::settings::host {

class GivenFilesStore final : public Store {
 public:
  struct File {
    std::string path;           // bytes for the system; empty for a content
    std::string name, content;  // narrow text, and the bytes of the file
  };

  explicit GivenFilesStore(std::vector<File> files) : files_(std::move(files)) {}

  void readAll(Node& root, int level) override;
  bool apply(const Changes& changes, const Receiver& receive) override;
  void catchUp(const Receiver&) override {}
  void synchronize(const Receiver&) override {}
  bool keepsChanges() const override { return true; }
  bool isCurrent() override { return true; }
  const std::string& readOnlyReason() const override { return readOnlyReason_; }
  // Reads the files again, for line and column.
  std::string sourceOf(const std::string& path) const override;
  bool watch(const Watcher&) override { return true; }
  void look() override {}

 private:
  static NodePtr read(const File& file, const ParseRules& rules);

  const std::vector<File> files_;
  const std::string readOnlyReason_ = "it is read from the files of the application";
};

}  // namespace zlutil::settings::host
