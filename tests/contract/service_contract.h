// The contract suite of the settings service: what every implementation of service/ has to do, seen
// through its headers alone. Each test gets an empty root from the implementation under test.
#pragma once

#include <functional>
#include <ostream>

#include "tests/support/settings_verbs.h"

namespace test {

struct Implementation {
  const char* name;
  // A new empty tree at whose levels "session" and "user" values can be set.
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
