#include "nativesettings/levels.h"

#include <cstdlib>
#include <map>
#include <optional>

#include "nativesettings/records.h"
#include "tests/support/jvm.h"

namespace {

using namespace nativesettings;

class Levels : public testing_support::JvmTest {
 protected:
  int compare(const char* first, const char* second) {
    return nativeCompareLevels(env_, nullptr, first ? str(first) : nullptr,
                               second ? str(second) : nullptr);
  }
};

TEST_F(Levels, TheNativesReturnTheWellKnownNames) {
  EXPECT_EQ("user", text(nativeGetUserLevel(env_, nullptr)));
  EXPECT_EQ("workgroup", text(nativeGetWorkgroupLevel(env_, nullptr)));
  EXPECT_EQ("factory", text(nativeGetFactoryLevel(env_, nullptr)));
  EXPECT_EQ("session", text(nativeGetSessionLevel(env_, nullptr)));
  EXPECT_EQ("user", text(nativeGetDefaultLevel(env_, nullptr)));
}

TEST_F(Levels, OnlyAnEarlierLevelComparesAsOne) {
  const std::vector<std::string>& order = allLevelNames();
  ASSERT_EQ((std::vector<std::string>{"session", "user", "workgroup", "factory"}), order);
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (std::size_t j = 0; j < order.size(); ++j) {
      EXPECT_EQ(i < j ? 1 : i == j ? 0 : -1, compare(order[i].c_str(), order[j].c_str()));
    }
    EXPECT_EQ(-1, compare(order[i].c_str(), "unknown"));
    EXPECT_EQ(-1, compare("unknown", order[i].c_str()));
    EXPECT_EQ(-1, compare(nullptr, order[i].c_str()));
  }
  EXPECT_EQ(-1, compare("unknown", "unknown"));
  EXPECT_EQ(-1, compare(nullptr, nullptr));
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
  EXPECT_EQ("/f1", set("/f1", "/u1"));
  EXPECT_EQ("/f2", set("/f2", "/u2"));
  EXPECT_STREQ("/f2", std::getenv("SETTINGS_FACTORYDIR"));
  EXPECT_STREQ("/u2", std::getenv("SETTINGS_USERDIR"));
}

TEST_F(TestEnvironment, AnEmptyDirectoryIsSetAsItIs) {
  EXPECT_EQ("", set("", ""));
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
  EXPECT_EQ(nullptr, std::getenv("SETTINGS_FACTORYDIR"));
  EXPECT_EQ(nullptr, std::getenv("SETTINGS_USERDIR"));
}

}  // namespace
