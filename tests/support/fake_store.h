// A small real store with knobs: it keeps what is applied in a record that outlives it, as a disk
// would, fails the n-th apply, and reports changes as if somebody else had made them.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/tree/store.h"

namespace test {

class FakeStore final : public zlutil::settings::host::Store {
 public:
  // What survives the store; shared by the stores that are opened on it one after the other.
  struct Record {
    std::map<std::string, zlutil::settings::host::DefineEntry> entries;
    std::map<std::string, boost::any> values;
    int applied = 0;  // batches
  };

  explicit FakeStore(std::shared_ptr<Record> record, const std::string& readOnlyReason = "")
      : record_(std::move(record)), readOnlyReason_(readOnlyReason) {}

  // The n-th apply() from now on fails; 1 is the next one.
  void failOn(int n) { failIn_ = n; }

  // Has others change what the store holds. The tree is told at once, as by the store's thread, or,
  // `unnoticed`, hears of it with the next apply() or look().
  void changeFromOutside(const zlutil::settings::host::Changes& changes, bool unnoticed = false);
  // From the next watch() on there is no thread.
  void goUnwatched() { isWatched_ = false; }

  void readAll(zlutil::settings::host::Node& root, int level) override;
  bool apply(const zlutil::settings::host::Changes& changes, const Receiver& receive) override;
  void catchUp(const Receiver& receive) override;
  bool keepsChanges() const override { return true; }
  bool isCurrent() override { return external_.changes.empty(); }
  const std::string& readOnlyReason() const override { return readOnlyReason_; }
  bool watch(const Watcher& watcher) override {
    watcher_ = watcher;
    return isWatched_;
  }
  void look() override {
    if (!isCurrent()) watcher_();
  }

 private:
  const std::shared_ptr<Record> record_;
  const std::string readOnlyReason_;
  int failIn_ = 0;
  bool isWatched_ = true;
  zlutil::settings::host::ExternalChanges external_{{}, false, "the fake store"};
  Watcher watcher_;
};

}  // namespace test
