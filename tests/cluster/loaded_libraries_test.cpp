// Which libraries a program of the host has in memory: those for clusters only if one is
// configured.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "service/failures.h"
#include "service/settings.h"
#include "tests/support/temporary_directory.h"

namespace test {
namespace {

using zlutil::settings::Settings;

bool isMapped(const std::string& name) {
  std::ifstream maps("/proc/self/maps");
  const std::string text(std::istreambuf_iterator<char>(maps), {});
  return text.find(name) != std::string::npos;
}

TEST(LoadedLibraries, AreThoseOfAClusterOnlyIfOneIsConfigured) {
  const TemporaryDirectory user;
  setenv("SETTINGS_USERDIR", user.path().c_str(), 1);
  setenv("SETTINGS_FACTORYDIR", user.path().c_str(), 1);
  unsetenv("SETTINGS_WORKGROUP");
  ASSERT_TRUE(Settings::getSettingsRoot(zlutil::contextmgr::ZcrID(1)));
  EXPECT_TRUE(isMapped("libsettingshost"));
  EXPECT_FALSE(isMapped("libcurl"));
  EXPECT_FALSE(isMapped("libsettingsetcd"));

  setenv("SETTINGS_WORKGROUP", "http://nowhere", 1);
  testing::internal::CaptureStderr();
  const auto refused = Settings::getSettingsRoot(zlutil::contextmgr::ZcrID(2));
  const std::string report = testing::internal::GetCapturedStderr();
  EXPECT_NE(report.find("prefix"), std::string::npos) << report;
  EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 1) << report;

  setenv("SETTINGS_WORKGROUP", "http://127.0.0.1:1/team", 1);
  testing::internal::CaptureStderr();
  ASSERT_TRUE(Settings::getSettingsRoot(zlutil::contextmgr::ZcrID(3)));
  EXPECT_NE(testing::internal::GetCapturedStderr().find("cannot be read"), std::string::npos);
  EXPECT_TRUE(isMapped("libcurl"));
  EXPECT_TRUE(isMapped("libsettingsetcd"));
}

}  // namespace
}  // namespace test
