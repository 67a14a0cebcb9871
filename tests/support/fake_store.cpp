#include "tests/support/fake_store.h"

#include "host/change/external_changes.h"
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
  void operator()(const FixKind& change) const {
    const auto entry = record.entries.find(change.path);
    if (entry != record.entries.end()) entry->second.kind = change.kind;
  }
  void operator()(const RemoveSubtree& change) const {
    erase(record.values, change.path);
    erase(record.entries, change.path);
  }

  template <class Map>
  static void erase(Map& map, const std::string& path) {
    for (auto entry = map.begin(); entry != map.end();) {
      const bool isBelow = entry->first == path || entry->first.rfind(path + '.', 0) == 0;
      entry = isBelow ? map.erase(entry) : std::next(entry);
    }
  }
};

}  // namespace

void FakeStore::readAll(Node& root, int level) {
  ExternalChanges contents;  // in path order, so parents come before children
  for (const auto& entry : record_->entries) contents.changes.push_back(entry.second);
  for (const auto& value : record_->values)
    contents.changes.push_back(PutValue{value.first, value.second});
  applyExternalChanges(root, level, contents);
}

void FakeStore::changeFromOutside(const Changes& changes, bool unnoticed) {
  external_.changes.insert(external_.changes.end(), changes.begin(), changes.end());
  if (!unnoticed) watcher_();
}

void FakeStore::catchUp(const Receiver& receive) {
  ExternalChanges external{{}, false, external_.holder};
  external.changes.swap(external_.changes);
  receive(external);
}

bool FakeStore::apply(const Changes& changes, const Receiver& receive) {
  if (!readOnlyReason_.empty() || --failIn_ == 0) {
    throw zlutil::settings::Failure<KORVEN::settings::core::StoreFailure>(
        std::string("the fake store"),
        readOnlyReason_.empty() ? std::string("the disk is full") : readOnlyReason_);
  }
  bool isWelcome = true;
  if (!isCurrent()) catchUp([&](const auto& external) { return isWelcome = receive(external); });
  if (!isWelcome) return false;
  ++record_->applied;
  for (const Change& change : changes) std::visit(ApplyTo{*record_}, change);
  return true;
}

}  // namespace test
