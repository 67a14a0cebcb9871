#include "host/files/xml_directory_store.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>

#include "host/files/settings_reader.h"
#include "host/files/source_position.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/tree/subtree.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

constexpr std::string_view kExtension = ".xml";

bool isExtensionInCapitals(const std::string& extension) {
  return extension.size() == kExtension.size() && extension != kExtension &&
         strcasecmp(extension.c_str(), kExtension.data()) == 0;
}

// Returns the settings files in the directory, in name order.
std::vector<std::string> filesIn(const std::string& directory, bool isRequired) {
  std::vector<std::string> files;
  if (directory.empty()) return files;
  std::error_code error;
  for (std::filesystem::directory_iterator file(directory, error), end; !error && file != end;
       file.increment(error)) {
    const std::string extension = file->path().extension().string();
    if (extension == kExtension) files.push_back(file->path().string());
    if (isExtensionInCapitals(extension)) {
      logError(shownFileName(file->path().string()) +
               ": is not read: the name of a settings file must end in \".xml\"");
    }
  }
  if (error && (isRequired || error != std::errc::no_such_file_or_directory)) {
    logError(shownFileName(directory) + ": " + error.message());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string reasonFor(const std::string& directory) {
  return directory.empty() ? std::string("it has no directory")
                           : "it is read from the files in " + shownFileName(directory);
}

}  // namespace

XmlDirectoryStore::XmlDirectoryStore(const std::string& directory, bool isRequired)
    : directory_(directory), isRequired_(isRequired), readOnlyReason_(reasonFor(directory)) {}

void XmlDirectoryStore::readAll(Node& root, int level) {
  ParseRules rules;
  rules.tree = root.treePtr();
  rules.level = level;
  rules.isOnlyLevel = true;
  rules.earlier = &root;
  rules.onDoubt = logError;
  std::vector<std::pair<std::string, std::string>> formerPaths;
  rules.onFormerPath = [&](const Key& key, const std::string& former) {
    formerPaths.emplace_back(former, key.pathBelowTop());
  };
  for (const std::string& file : filesIn(directory_, isRequired_)) {
    formerPaths.clear();
    try {
      merge(*readSettingsTree(file, rules), root, level);
      files_.push_back(file);
      for (const auto& [former, present] : formerPaths) {
        root.tree().formerNames().add(former, present);
      }
    } catch (const std::exception& failure) {
      unreadable_.push_back(failure.what());
      logError(failure.what());
    }
  }
}

std::string XmlDirectoryStore::sourceOf(const std::string& path) const {
  std::string source;
  for (const std::string& file : files_) {
    const std::string found = positionOf(
        path, shownFileName(file), [&](const ParseRules& rules) { readSettingsTree(file, rules); });
    // A later file has the last word.
    if (!found.empty()) source = found;
  }
  return source.empty() ? "a file in " + shownFileName(directory_) + " that has changed since"
                        : source;
}

bool XmlDirectoryStore::apply(const Changes&, const Receiver&) {
  throw Failure<KORVEN::settings::core::StoreFailure>(shownFileName(directory_), readOnlyReason_);
}

}  // namespace zlutil::settings::host
