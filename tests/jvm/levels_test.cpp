#include "nativesettings/levels.h"

#include <cstdlib>
#include <map>
#include <optional>

#include "nativesettings/records.h"
#include "tests/support/jvm.h"

namespace {

using namespace nativesettings;

class Levels : public test::JvmTest {
 protected:
  int compare(const char* first, const char* second) {
    return nativeCompareLevels(env_, nullptr, first ? str(first) : nullptr,
                               second ? str(second) : nullptr);
  }
};

TEST_F(Levels, TheNativesReturnTheWellKnownNames) {
  EXPECT_EQ(text(nativeGetUserLevel(env_, nullptr)), "user");
  EXPECT_EQ(text(nativeGetWorkgroupLevel(env_, nullptr)), "workgroup");
  EXPECT_EQ(text(nativeGetFactoryLevel(env_, nullptr)), "factory");
  EXPECT_EQ(text(nativeGetSessionLevel(env_, nullptr)), "session");
  EXPECT_EQ(text(nativeGetDefaultLevel(env_, nullptr)), "user");
}

TEST_F(Levels, OnlyAnEarlierLevelComparesAsOne) {
  const std::vector<std::string>& order = allLevelNames();
  ASSERT_EQ((std::vector<std::string>{"session", "user", "workgroup", "factory"}), order);
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (std::size_t j = 0; j < order.size(); ++j) {
      EXPECT_EQ(i < j ? 1 : i == j ? 0 : -1, compare(order[i].c_str(), order[j].c_str()));
    }
    EXPECT_EQ(compare(order[i].c_str(), "unknown"), -1);
    EXPECT_EQ(compare("unknown", order[i].c_str()), -1);
    EXPECT_EQ(compare(nullptr, order[i].c_str()), -1);
  }
  EXPECT_EQ(compare("unknown", "unknown"), -1);
  EXPECT_EQ(compare(nullptr, nullptr), -1);
}

// The environment is as before when a test is over: other tests of this process may depend on it.
class TestEnvironment : public Levels {
 protected:
  void SetUp() override {
    Levels::SetUp();
    for (auto& [name, value] : before_) {
      if (const char* const present = std::getenv(name)) value = present;
    }
  }
  void TearDown() override {
    for (const auto& [name, value] : before_) {
      value ? setenv(name, value->c_str(), 1) : unsetenv(name);
    }
    Levels::TearDown();
  }
  std::string set(const std::string& factory, const std::string& user) {
    return text(nativeSetEnv(env_, nullptr, str(factory), str(user)));
  }

 private:
  std::map<const char*, std::optional<std::string>> before_{{"SETTINGS_FACTORYDIR", {}},
                                                            {"SETTINGS_USERDIR", {}}};
};

TEST_F(TestEnvironment, SettingOverwritesAndReturnsTheFactoryDirectory) {
  EXPECT_EQ(set("/f1", "/u1"), "/f1");
  EXPECT_EQ(set("/f2", "/u2"), "/f2");
  EXPECT_STREQ("/f2", std::getenv("SETTINGS_FACTORYDIR"));
  EXPECT_STREQ("/u2", std::getenv("SETTINGS_USERDIR"));
}

TEST_F(TestEnvironment, AnEmptyDirectoryIsSetAsItIs) {
  EXPECT_EQ(set("", ""), "");
  EXPECT_STREQ("", std::getenv("SETTINGS_FACTORYDIR"));
}

TEST_F(TestEnvironment, DirectoriesReachTheEnvironmentAsStandardUtf8) {
  const std::string smileyInJava = "/\xED\xA0\xBD\xED\xB8\x80";
  EXPECT_EQ(smileyInJava, set(smileyInJava, ""));
  EXPECT_STREQ("/\xF0\x9F\x98\x80", std::getenv("SETTINGS_FACTORYDIR"));
}

TEST_F(TestEnvironment, UnsettingRemovesBothVariables) {
  set("/f", "/u");
  nativeUnsetEnv(env_, nullptr);
  EXPECT_EQ(std::getenv("SETTINGS_FACTORYDIR"), nullptr);
  EXPECT_EQ(std::getenv("SETTINGS_USERDIR"), nullptr);
}

}  // namespace
