// The settings of the process in memory, for tests of C++ programs.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "service/setting_key.h"
#include "service/settings.h"
#include "service/testing.h"

namespace settings = zlutil::settings;

TEST(ProcessInMemory, IsEmptyAndWritableAtEveryLevel) {
  ASSERT_TRUE(settings::keepSettingsInMemory());
  const auto root = settings::Settings::getSettingsRoot(zlutil::contextmgr::BlessedZcrID);
  const settings::SettingKey<int> fontSize("editor.fontSize", 12);
  fontSize.set(root, 14);
  for (const char* level : {"session", "workgroup", "factory"}) {
    root->set("editor.fontSize", 14, level);
  }
  EXPECT_EQ(fontSize.get(root), 14);
  EXPECT_FALSE(std::filesystem::exists(std::getenv("SETTINGS_USERDIR")));
  EXPECT_TRUE(settings::keepSettingsInMemory());
}
