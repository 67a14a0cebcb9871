// The contract suite of the settings service: the duties of every implementation of service/,
// tested through its headers alone. Each test gets an empty root from the implementation under
// test.
#pragma once

#include <functional>
#include <ostream>

#include "tests/support/settings_verbs.h"

namespace test {

struct Implementation {
  const char* name;
  // Returns a new empty tree in which values can be set at the levels "session" and "user".
  std::function<SettingsPtr()> makeRoot;

  friend std::ostream& operator<<(std::ostream& out, const Implementation& implementation) {
    return out << implementation.name;
  }
};

class ServiceContract : public testing::TestWithParam<Implementation> {
 protected:
  const SettingsPtr root = GetParam().makeRoot();
};

}  // namespace test
