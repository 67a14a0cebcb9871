#include "nativesettings/paths.h"

#include "nativesettings/handles.h"
#include "tests/support/bridge_test.h"

namespace {

using namespace nativesettings;
using test::BridgeTest;
using test::SettingsPtr;
using Names = std::vector<std::string>;

class Paths : public BridgeTest {};

TEST_F(Paths, PathAndKeyBecomeAListOfNamesAndADottedText) {
  EXPECT_EQ(Names(), getPathFromJava(env_, nullptr, nullptr));
  EXPECT_EQ(getDotPathFromJava(env_, nullptr, nullptr), "");
  EXPECT_EQ((Names{"a", "b", "k"}), getPathFromJava(env_, path({"a", "b"}), str("k")));
  EXPECT_EQ(getDotPathFromJava(env_, path({"a", "b"}), str("k")), "a.b.k");
  EXPECT_EQ(getDotPathFromJava(env_, nullptr, str("k")), "k");
}

TEST_F(Paths, ANullElementCountsAsAnEmptyName) {
  jobjectArray withNull = path({"a", "b"});
  env_->SetObjectArrayElement(withNull, 0, nullptr);
  EXPECT_EQ((Names{"", "b"}), getPathFromJava(env_, withNull, nullptr));
}

TEST_F(Paths, EmptyNamesAreKeptInAListAndSkippedWhenAccumulated) {
  EXPECT_EQ(getDotPath(Names{"a", "", "b"}), "a..b");
  std::string accumulated;
  for (const char* name : {"a", "", "b"}) getDotPath(accumulated, name);
  EXPECT_EQ(accumulated, "a.b");
}

TEST_F(Paths, ALongPathMakesNoJniWarning) {
  Names names(300, "n");
  EXPECT_EQ(names, getPathFromJava(env_, path(names), nullptr));
}

TEST_F(Paths, ANodeOrAKeyIsFoundOnlyWhenItIsWanted) {
  EXPECT_EQ(root_, getNodeFromJava(env_, handle_, nullptr, false));
  EXPECT_EQ(root_, getNodeFromJava(env_, handle_, path({}), false));
  EXPECT_EQ(entryAt({"a", "b"}), getNodeFromJava(env_, handle_, path({"a", "b"}), false));
  EXPECT_EQ(entryAt({"a", "b", "k"}), getNodeFromJava(env_, handle_, path({"a", "b", "k"}), true));
  EXPECT_FALSE(getNodeFromJava(env_, handle_, path({"a", "b", "k"}), false));
  EXPECT_FALSE(getNodeFromJava(env_, handle_, path({"a", "b"}), true));
  EXPECT_FALSE(getNodeFromJava(env_, handle_, nullptr, true));
  for (const Names& missing :
       {Names{"x"}, Names{"a", "x"}, Names{"a", "s", "x"}, Names{""}, Names{"a.b"}}) {
    EXPECT_FALSE(getNodeFromJava(env_, handle_, path(missing), false));
  }
}

TEST_F(Paths, ThePathOfANodeHasTheNamesBelowTheRoot) {
  EXPECT_EQ((Names{"a", "b"}), texts(getSettingPathAsJArray(env_, entryAt({"a", "b"}))));
  EXPECT_EQ(Names(), texts(getSettingPathAsJArray(env_, root_)));
}

TEST_F(Paths, AVeryDeepPathMakesNoJniWarning) {
  SettingsPtr node = root_;
  Names names;
  for (int i = 0; i < 100; ++i) {
    names.push_back("n" + std::to_string(i));
    node = addNode(node, names.back());
  }
  EXPECT_EQ(names, texts(getSettingPathAsJArray(env_, node)));
}

}  // namespace
