// The store of a level whose values end with the tree. It has no state, so one object serves all
// trees. Any thread.
#pragma once

#include "host/tree/store.h"

namespace zlutil::settings::host {

class MemoryStore final : public Store {
 public:
  void readAll(Node&, int) override {}
  bool apply(const Changes&, const Receiver&) override { return true; }
  void catchUp(const Receiver&) override {}
  void synchronize(const Receiver&) override {}
  bool keepsChanges() const override { return false; }
  bool isCurrent() override { return true; }
  const std::string& readOnlyReason() const override { return writable_; }
  std::string sourceOf(const std::string&) const override { return "the memory of this process"; }
  bool watch(const Watcher&) override { return true; }
  void look() override {}

 private:
  const std::string writable_;
};

}  // namespace zlutil::settings::host
