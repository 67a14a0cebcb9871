#include "host/shared_store/key_layout.h"

#include <algorithm>

#include "host/os/file_name.h"
#include "host/shared_store/setting_document.h"
#include "host/tree/entry.h"
#include "service/identifier.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

// Returns the path of the node above; "" for an entry below the root.
std::string above(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string::npos ? std::string() : path.substr(0, dot);
}

}  // namespace

std::string keyOf(const std::string& keyPrefix, const std::string& path) {
  std::string key = keyPrefix + path;
  std::replace(key.begin() + static_cast<std::ptrdiff_t>(keyPrefix.size()), key.end(), '.', '/');
  return key;
}

std::optional<std::string> pathOf(const std::string& keyPrefix, std::string_view key) {
  if (key.substr(0, keyPrefix.size()) != keyPrefix) return std::nullopt;
  std::string path(key.substr(keyPrefix.size()));
  if (path.find_first_of(std::string_view(".\0", 2)) != std::string::npos) return std::nullopt;
  std::size_t begin = 0;
  for (int depth = 1; depth <= kMaxDepth; ++depth) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    if (!isIdentifierName(path.substr(begin, end - begin).c_str())) return std::nullopt;
    if (end == path.size()) return path;
    path[end] = '.';
    begin = end + 1;
  }
  return std::nullopt;
}

void KeyReader::clear() {
  nodes_.clear();
  ignored_.clear();
}

void KeyReader::enter(const std::string& path, Changes& changes) {
  const std::string parent = above(path);
  if (parent.empty()) return;
  const auto [found, isNew] = nodes_.try_emplace(parent);
  ++found->second.children;
  if (!isNew) return;
  enter(parent, changes);
  changes.push_back(DefineEntry{parent, false, 0, {}});
}

void KeyReader::leave(const std::string& path, Changes& changes) {
  std::string top = path;
  for (std::string parent = above(path); !parent.empty(); parent = above(parent)) {
    const auto found = nodes_.find(parent);
    if (found == nodes_.end()) break;
    if (--found->second.children > 0 || found->second.hasKey) break;
    nodes_.erase(found);
    top = parent;
  }
  changes.push_back(RemoveSubtree{top});
}

KeyReader::Reading KeyReader::read(const KeyValue& item, bool isNew) {
  Reading reading;
  std::string reason = "it is no path of names";
  std::optional<SettingDocument> document;
  const std::optional<std::string> path = pathOf(keyPrefix_, item.key);
  if (path) document = parseDocument(item.value, reason);
  if (!document) {
    if (isNew) ignored_.insert(item.key);
    report_(shownFileName(item.key), reason);
    return reading;
  }
  const bool mustEnter = ignored_.erase(item.key) != 0 || isNew;
  reading.path = *path;
  reading.validator = document->validator;
  reading.commit = document->commit;
  Changes& changes = reading.changes;
  if (document->isNode) {
    const auto [node, isNewNode] = nodes_.try_emplace(*path);
    node->second.hasKey = true;
    if (isNewNode) enter(*path, changes);
    changes.push_back(DefineEntry{*path, false, 0, document->validator});
    return reading;
  }
  if (mustEnter) enter(*path, changes);
  changes.push_back(DefineEntry{*path, true, document->kind, document->validator});
  if (document->value.empty()) {
    changes.push_back(EraseValue{*path});
  } else {
    changes.push_back(PutValue{*path, std::move(document->value)});
  }
  return reading;
}

KeyReader::Reading KeyReader::readDeletion(const KeyValue& item) {
  Reading reading;
  const std::optional<std::string> path = pathOf(keyPrefix_, item.key);
  if (!path || ignored_.erase(item.key) != 0) return reading;
  reading.path = *path;
  const auto node = nodes_.find(*path);
  if (node != nodes_.end()) {
    node->second.hasKey = false;
    if (node->second.children > 0) return reading;
    nodes_.erase(node);
  }
  leave(*path, reading.changes);
  return reading;
}

}  // namespace zlutil::settings::host
