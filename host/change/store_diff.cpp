#include "host/change/store_diff.h"

#include <unordered_map>
#include <unordered_set>

#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

class Difference {
 public:
  Difference(int level, const Changes& stored) : level_(level) {
    for (const Change& change : stored) {
      if (const auto* definition = std::get_if<DefineEntry>(&change)) {
        definitions_.emplace(definition->path, definition);
      } else if (const auto* value = std::get_if<PutValue>(&change)) {
        values_.insert(value->path);
      }
    }
  }

  void addRemovals(const Node& node, const std::string& prefix) {
    for (const EntryPtr& child : node.childrenByName()) {
      const std::string path = prefix + child->name();
      if (child->isDefinedAt(level_) && !isStored(*child, path)) {
        removals_.push_back(RemoveSubtree{path});
      } else if (!child->isKey()) {
        addRemovals(static_cast<const Node&>(*child), path + '.');
      } else if (!static_cast<const Key&>(*child).value(level_).empty() && !values_.count(path)) {
        removals_.push_back(EraseValue{path});
      }
    }
  }

  Changes takeRemovals() { return std::move(removals_); }

 private:
  bool isStored(const Entry& entry, const std::string& path) const {
    const auto found = definitions_.find(path);
    if (found == definitions_.end() || found->second->isKey != entry.isKey()) return false;
    if (!entry.isKey() || found->second->kind == boostany::kNoValue) return true;
    const int kind = static_cast<const Key&>(entry).kind();
    return kind == boostany::kNoValue || kind == found->second->kind;
  }

  const int level_;
  std::unordered_map<std::string, const DefineEntry*> definitions_;
  std::unordered_set<std::string> values_;
  Changes removals_;
};

}  // namespace

Changes diffWithStore(const Node& root, int level, const Changes& stored) {
  Difference difference(level, stored);
  difference.addRemovals(root, "");
  Changes changes = difference.takeRemovals();
  changes.insert(changes.end(), stored.begin(), stored.end());
  return changes;
}

}  // namespace zlutil::settings::host
