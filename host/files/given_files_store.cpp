#include "host/files/given_files_store.h"

#include "host/files/settings_reader.h"
#include "host/files/source_position.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/tree/subtree.h"
#include "service/failures.h"

namespace zlutil::settings::host {

NodePtr GivenFilesStore::read(const File& file, const ParseRules& rules) {
  return file.path.empty() ? readSettingsContent(file.content, file.name, rules)
                           : readSettingsTree(file.path, rules);
}

void GivenFilesStore::readAll(Node& root, int level) {
  ParseRules rules;
  rules.tree = root.treePtr();
  rules.level = level;
  rules.isOnlyLevel = true;
  rules.earlier = &root;
  rules.onDoubt = logError;
  rules.onFormerPath = [&](const Key& key, const std::string& former) {
    root.tree().formerNames().add(former, key.pathBelowTop());
  };
  for (const File& file : files_) merge(*read(file, rules), root, level);
}

std::string GivenFilesStore::sourceOf(const std::string& path) const {
  std::string source;
  for (const File& file : files_) {
    const std::string shown = file.path.empty() ? file.name : shownFileName(file.path);
    const std::string found =
        positionOf(path, shown, [&](const ParseRules& rules) { read(file, rules); });
    // A later file has the last word.
    if (!found.empty()) source = found;
  }
  return source.empty() ? "a file of the application that has changed since" : source;
}

bool GivenFilesStore::apply(const Changes&, const Receiver&) {
  throw Failure<KORVEN::settings::core::StoreFailure>(std::string("the factory settings"),
                                                      readOnlyReason_);
}

}  // namespace zlutil::settings::host
