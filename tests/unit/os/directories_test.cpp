#include "host/os/directories.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace test {
namespace {

using zlutil::settings::host::currentDirectories;

// Sets a variable, or unsets it for null, and restores it at the end of the scope.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    assign(value);
  }
  ~Variable() { assign(before_ ? before_->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void assign(const char* value) const { value ? setenv(name_, value, 1) : unsetenv(name_); }

  const char* const name_;
  std::optional<std::string> before_;
};

TEST(Directories, TheUserDirectoryIsThatOfTheFirstVariableSet) {
  const struct {
    const char *own, *configuration, *home;
    std::string expected;
  } cases[] = {
      {"/own", "/configuration", "/home/me", "/own"},
      {"", "/configuration", "/home/me", "/configuration/velonix/settings"},
      {nullptr, "/configuration", nullptr, "/configuration/velonix/settings"},
      {nullptr, "", "/home/me", "/home/me/.config/velonix/settings"},
      {nullptr, nullptr, nullptr,
       std::string(getpwuid(getuid())->pw_dir) + "/.config/velonix/settings"},
  };
  for (const auto& each : cases) {
    const Variable own("SETTINGS_USERDIR", each.own);
    const Variable configuration("XDG_CONFIG_HOME", each.configuration);
    const Variable home("HOME", each.home);
    EXPECT_EQ(currentDirectories().user, each.expected);
  }
}

TEST(Directories, TheFactoryDirectoryIsBesideTheLibraryByDefault) {
  {
    const Variable factory("SETTINGS_FACTORYDIR", "/shipped");
    EXPECT_EQ(currentDirectories().factory, "/shipped");
  }
  const Variable factory("SETTINGS_FACTORYDIR", nullptr);
  const std::string beside = currentDirectories().factory;
  EXPECT_EQ(beside.front(), '/');
  EXPECT_EQ(beside.substr(beside.rfind('/')), "/factory");
}

TEST(Directories, ThereIsNoWorkgroupDirectoryByDefault) {
  {
    const Variable workgroup("SETTINGS_WORKGROUPDIR", nullptr);
    EXPECT_EQ(currentDirectories().workgroup, "");
  }
  const Variable workgroup("SETTINGS_WORKGROUPDIR", "/group");
  EXPECT_EQ(currentDirectories().workgroup, "/group");
}

}  // namespace
}  // namespace test
