// One contract suite for everything that can stand behind a level. A program that links it
// instantiates it for its stores.
#pragma once

#include "tests/support/fake_store.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {

struct StoreKind {
  const char* name;
  // Opens the store on what the earlier ones of this test have kept.
  std::function<std::shared_ptr<zlutil::settings::host::Store>(
      const std::shared_ptr<FakeStore::Record>&, const TemporaryDirectory&)>
      open;
  friend std::ostream& operator<<(std::ostream& out, const StoreKind& kind) {
    return out << kind.name;
  }
};

class StoreContract : public testing::TestWithParam<StoreKind> {
 protected:
  std::shared_ptr<zlutil::settings::host::Store> open() {
    return GetParam().open(record_, directory_);
  }

 private:
  const std::shared_ptr<FakeStore::Record> record_ = std::make_shared<FakeStore::Record>();
  const TemporaryDirectory directory_;
};

class WritableStore : public StoreContract {};
class ReadOnlyStore : public StoreContract {};

}  // namespace test
