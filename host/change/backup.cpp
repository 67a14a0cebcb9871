// Copies of the user level.
#include "service/backup.h"

#include <optional>

#include "host/change/archive.h"
#include "host/change/commit_comment.h"
#include "host/change/external_changes.h"
#include "host/os/file_name.h"
#include "service/failures.h"
#include "service/history.h"

namespace zlutil::settings {
namespace {

using namespace KORVEN::settings::core;

std::string requireFileName(const base::ustring& file) {
  if (const std::optional<std::string> name = host::fileNameFrom(file)) return *name;
  throw Failure<FileLoadingError>(file, std::string("no file can have this name"));
}

host::StoreArchive& requireArchive(const host::NodePtr& root) {
  if (host::StoreArchive* const archive = host::archiveOf(root)) return *archive;
  throw Failure<StoreFailure>(std::string("the user level"),
                              std::string("this tree does not store it"));
}

}  // namespace

void backUpUserLevel(const boost::shared_ptr<Settings>& given, const base::ustring& file) {
  const host::NodePtr root = host::rootOf(given);
  requireArchive(root).backUp(requireFileName(file));
}

std::string restoreUserLevel(const boost::shared_ptr<Settings>& given, const base::ustring& file) {
  const host::NodePtr root = host::rootOf(given);
  const std::string name = requireFileName(file);
  std::optional<CommitComment> comment;
  if (host::commitComment().empty()) comment.emplace("restored from " + host::shownFileName(name));
  const std::string kept = requireArchive(root).restore(name);
  host::catchUp(root->tree(), host::kUser);
  return host::shownFileName(kept);
}

}  // namespace zlutil::settings
