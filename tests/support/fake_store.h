// A small real store with knobs. What is applied goes to a record that outlives it, as a disk does.
// It can fail the n-th apply, and report changes as if another process had made them.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "host/tree/store.h"

namespace test {

class FakeStore final : public zlutil::settings::host::Store {
 public:
  // The content, which survives the store; the stores opened on it one after the other share it.
  struct Record {
    std::map<std::string, zlutil::settings::host::DefineEntry> entries;
    std::map<std::string, boost::any> values;
    int applied = 0;  // batches
  };

  explicit FakeStore(std::shared_ptr<Record> record, const std::string& readOnlyReason = "")
      : record_(std::move(record)), readOnlyReason_(readOnlyReason) {}

  // Makes the n-th apply() from now on fail; 1 is the next one.
  void failOn(int n) { failIn_ = n; }

  // Makes an external change. The tree is told at once, as by the store's thread, or, if
  // `unnoticed`, with the next apply() or look().
  void changeFromOutside(const zlutil::settings::host::Changes& changes, bool unnoticed = false);
  // Makes watch() return false from now on, as without a thread.
  void goUnwatched() { isWatched_ = false; }

  void readAll(zlutil::settings::host::Node& root, int level) override;
  bool apply(const zlutil::settings::host::Changes& changes, const Receiver& receive) override;
  void catchUp(const Receiver& receive) override;
  void synchronize(const Receiver& receive) override { catchUp(receive); }
  bool keepsChanges() const override { return true; }
  bool isCurrent() override { return external_.changes.empty(); }
  const std::string& readOnlyReason() const override { return readOnlyReason_; }
  std::string sourceOf(const std::string&) const override { return "a test"; }
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
