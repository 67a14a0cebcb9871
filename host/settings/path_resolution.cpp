// Resolution of the paths of a transaction.
#include "host/settings/node.h"
#include "service/failures.h"

namespace zlutil::settings::detail {
namespace {

using namespace KORVEN::settings::core;

// The path seen from the start. The paths of a standalone tree begin with its root's name; nothing
// when this one does not.
std::optional<std::string_view> pathFrom(const host::Node& start, std::string_view path) {
  if (!start.tree().isStandalone()) return path;
  const std::string& root = start.name();
  if (path.substr(0, root.size()) != root) return std::nullopt;
  if (path.size() == root.size()) return std::string_view();
  if (path[root.size()] != '.') return std::nullopt;
  return path.substr(root.size() + 1);
}

}  // namespace

boost::shared_ptr<Settings> NameToObjectTransformer::operator()(const std::string& path) {
  const host::Node* const start = dynamic_cast<const host::Node*>(start_.get());
  host::EntryPtr found;
  if (start) {
    if (const std::optional<std::string_view> below = pathFrom(*start, path)) {
      host::ReadLock lock(start->tree().lock());
      host::Entry* const entry =
          below->empty() ? const_cast<host::Node*>(start) : start->atPath(*below);
      if (entry) found = entry->shared_from_this();
    }
  }
  if (found && (acceptNodes_ || found->isKey())) return found;
  const std::string root = start_ ? start_->getName() : std::string();
  problems_.emplace_back(path, found ? Failure<NotAKeyName>(root, path).GetMessageTxt()
                                     : Failure<NoSuchKey>(root, path).GetMessageTxt());
  return {};
}

}  // namespace zlutil::settings::detail
