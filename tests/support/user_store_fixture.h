// A user store in a directory of its own, for the tests of the store.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "service/failures.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/user_tree.h"

namespace test {

class UserStoreTest : public testing::Test {
 protected:
  using NodePtr = zlutil::settings::host::NodePtr;
  using SqliteDatabase = zlutil::settings::host::SqliteDatabase;

  NodePtr open() { return openTree(storeIn(directory.path())); }
  std::unique_ptr<SqliteDatabase> shell() {
    return std::make_unique<SqliteDatabase>(database(), SQLITE_OPEN_READWRITE, 1000);
  }
  std::string database() { return directory.file("settings-1.db"); }

  // Waits until `holds`, for far longer than the poll of the other tree takes on a slow machine.
  template <class Condition>
  static bool eventually(const Condition& holds) {
    for (int wait = 0; wait < 30000 && !holds(); ++wait) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return holds();
  }
  static bool canEventuallySetK(const NodePtr& root) {
    return eventually([&] {
      try {
        root->setAny("k", 1, "user");
        return true;
      } catch (const zlutil::settings::Failure<KORVEN::settings::core::StoreFailure>&) {
        return false;
      }
    });
  }

  const TemporaryDirectory directory;
};

}  // namespace test
