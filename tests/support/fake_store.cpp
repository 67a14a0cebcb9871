#include "tests/support/fake_store.h"

#include "host/settings/foreign_changes.h"
#include "service/failures.h"

namespace test {
namespace {

using namespace zlutil::settings::host;

struct ApplyTo {
  FakeStore::Record& record;

  void operator()(const PutValue& change) const { record.values[change.path] = change.value; }
  void operator()(const EraseValue& change) const { record.values.erase(change.path); }
  void operator()(const DefineEntry& change) const {
    record.entries.insert_or_assign(change.path, change);
  }
  void operator()(const RemoveSubtree& change) const {
    erase(record.values, change.path);
    erase(record.entries, change.path);
  }

  template <class Map>
  static void erase(Map& map, const std::string& path) {
    for (auto at = map.begin(); at != map.end();) {
      const bool isBelow = at->first == path || at->first.rfind(path + '.', 0) == 0;
      at = isBelow ? map.erase(at) : std::next(at);
    }
  }
};

}  // namespace

void FakeStore::readAll(Node& root, int level) {
  Changes contents;  // in path order, so parents come before children
  for (const auto& entry : record_->entries) contents.push_back(entry.second);
  for (const auto& value : record_->values) contents.push_back(PutValue{value.first, value.second});
  applyForeignChanges(root, level, [&](const Node&) { return contents; });
}

void FakeStore::apply(const Changes& changes) {
  if (!readOnlyReason_.empty() || --failIn_ == 0) {
    throw zlutil::settings::Failure<KORVEN::settings::core::StoreFailure>(
        std::string("the fake store"),
        readOnlyReason_.empty() ? std::string("the disk is full") : readOnlyReason_);
  }
  ++record_->applied;
  for (const Change& change : changes) std::visit(ApplyTo{*record_}, change);
}

}  // namespace test
