// The store of a level that cannot be used: it is empty, and refuses every change with the reason.
// Any thread.
#pragma once

#include "host/tree/store.h"
#include "service/failures.h"

namespace zlutil::settings::host {

class UnavailableStore final : public Store {
 public:
  explicit UnavailableStore(const std::string& reason) : reason_(reason) {}

  void readAll(Node&, int) override {}
  bool apply(const Changes&, const Receiver&) override {
    throw Failure<KORVEN::settings::core::StoreFailure>(std::string("the level"), reason_);
  }
  void catchUp(const Receiver&) override {}
  void synchronize(const Receiver&) override {}
  bool keepsChanges() const override { return true; }
  bool isCurrent() override { return true; }
  const std::string& readOnlyReason() const override { return reason_; }
  std::string sourceOf(const std::string&) const override { return ""; }
  bool watch(const Watcher&) override { return true; }
  void look() override {}

 private:
  const std::string reason_;
};

}  // namespace zlutil::settings::host
