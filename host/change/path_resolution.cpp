// Resolution of the paths of a transaction.
#include <typeinfo>

#include "host/tree/node.h"
#include "service/failures.h"

namespace zlutil::settings::detail {
namespace {

using namespace KORVEN::settings::core;

// Returns the path below `start`. The paths of a standalone tree begin with the name of its root;
// nothing is returned for a path that does not.
std::optional<std::string_view> pathFrom(const host::Node& start, std::string_view path) {
  if (!start.tree().isStandalone()) return path;
  const std::string& root = start.name();
  if (path.substr(0, root.size()) != root) return std::nullopt;
  if (path.size() == root.size()) return std::string_view();
  if (path[root.size()] != '.') return std::nullopt;
  return path.substr(root.size() + 1);
}

}  // namespace

boost::shared_ptr<Settings> NameToObjectTransformer::find(const std::string& path) {
  Settings* const given = start_.get();
  if (!given || typeid(*given) != typeid(host::Node)) return {};
  host::Node& start = static_cast<host::Node&>(*given);
  const std::optional<std::string_view> below = pathFrom(start, path);
  if (!below) return {};
  if (below->empty()) return start_;
  const std::size_t dot = below->rfind('.');
  const std::string_view above = below->substr(0, dot == std::string_view::npos ? 0 : dot);
  const std::string_view name = above.empty() ? *below : below->substr(dot + 1);
  boost::shared_ptr<Settings> previous;  // let go of after the lock
  host::ReadLock lock(start.tree().lock());
  if (!node_ || nodePath_ != above || !static_cast<host::Node&>(*node_).isAttached()) {
    host::Entry* const node = above.empty() ? &start : start.atPath(above);
    if (!node || node->isKey()) return {};
    previous.swap(node_);
    node_ = node->shared_from_this();
    nodePath_ = above;
  }
  host::Entry* const entry = static_cast<host::Node&>(*node_).child(name);
  return entry ? entry->shared_from_this() : host::EntryPtr();
}

boost::shared_ptr<Settings> NameToObjectTransformer::operator()(const std::string& path) {
  boost::shared_ptr<Settings> found = find(path);
  if (found && (acceptNodes_ || found->isKey())) return found;
  const std::string root = start_ ? start_->getName() : std::string();
  problems_.emplace_back(path, found ? Failure<NotAKeyName>(root, path).GetMessageTxt()
                                     : Failure<NoSuchKey>(root, path).GetMessageTxt());
  return {};
}

}  // namespace zlutil::settings::detail
