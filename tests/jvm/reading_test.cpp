// The natives that read, called as the JVM calls them.
#include "nativesettings/reading.h"

#include "service/failures.h"
#include "tests/support/bridge_test.h"

namespace {

using namespace nativesettings;
using test::BridgeTest;
using test::takeException;
using zlutil::settings::Failure;
using Names = std::vector<std::string>;

constexpr const char* kNotFound = "com.velonix.services.settings.SettingNotFoundException: ";

class Reading : public BridgeTest {
 protected:
  jobject get(const Names& node, const char* key, const char* level) {
    return nativeGet(env_, nullptr, handle_, path(node), str(key), level ? str(level) : nullptr);
  }
  std::string level(const Names& node, const char* key) {
    return text(nativeGetLevel(env_, nullptr, handle_, path(node), str(key)));
  }
  bool isSet(const Names& node, const char* key, const char* level) {
    return nativeIsSet(env_, nullptr, handle_, path(node), str(key), level ? str(level) : nullptr);
  }
  bool exists(const Names& node, const char* key) {
    return nativeExists(env_, nullptr, handle_, path(node), key ? str(key) : nullptr);
  }
  bool isChildNode(const Names& node, const char* name) {
    return nativeIsChildNode(env_, nullptr, handle_, path(node), str(name));
  }
  Names children(const Names& node, int selector) {
    return texts(nativeGetChildren(env_, nullptr, handle_, path(node), selector));
  }
};

TEST_F(Reading, TheEffectiveValueIsThatOfTheFirstLevelThatHasOne) {
  EXPECT_EQ(show(valueOf(get({"a", "b"}, "k", nullptr))), "7");
  EXPECT_EQ(className(valueOf(get({"a", "b"}, "k", nullptr))), "java.lang.Integer");
  EXPECT_EQ(level({"a", "b"}, "k"), "user");
  entryAt({"a", "b"})->setAny("k", 9, "session");
  EXPECT_EQ(show(valueOf(get({"a", "b"}, "k", nullptr))), "9");
  EXPECT_EQ(level({"a", "b"}, "k"), "session");
}

TEST_F(Reading, AValueIsReadAtItsOwnLevelOnly) {
  EXPECT_EQ(show(valueOf(get({"a", "b"}, "k", "user"))), "7");
  EXPECT_EQ(show(valueOf(get({"a", "b"}, "k", "factory"))), "1");
}

TEST_F(Reading, WithoutAValueTheInfoHasTheDeclaredClass) {
  jobject atSession = get({"a", "b"}, "k", "session");
  EXPECT_EQ(show(valueOf(atSession)), "null");
  EXPECT_EQ(show(typeOf(atSession)), "class java.lang.Integer");
  jobject empty = get({"a", "b"}, "empty", nullptr);
  EXPECT_EQ(show(valueOf(empty)), "null");
  EXPECT_EQ(show(typeOf(empty)), "null");
  EXPECT_EQ(level({"a", "b"}, "empty"), "null");
}

TEST_F(Reading, AMissingEntryIsReportedByItsDottedPath) {
  EXPECT_EQ(get({"a", "x"}, "k", nullptr), nullptr);
  EXPECT_EQ(kNotFound + std::string("a.x.k"), takeException(env_));
  EXPECT_EQ(get({"a", "b"}, "x", nullptr), nullptr);
  EXPECT_EQ(kNotFound + std::string("a.b.x"), takeException(env_));
  EXPECT_EQ(get({"a"}, "b", nullptr), nullptr) << "a node is no key";
  EXPECT_EQ(kNotFound + std::string("a.b"), takeException(env_));
  level({"a", "x"}, "k");
  EXPECT_EQ(kNotFound + std::string("a.x.k"), takeException(env_));
  level({"a", "b"}, "x");
  EXPECT_EQ(kNotFound + std::string("a.b.x"), takeException(env_));
}

TEST_F(Reading, AnUnknownLevelIsARuntimeExceptionInEveryMethod) {
  const std::string expected = "java.lang.RuntimeException: Unsupported level for a.b.k";
  get({"a", "b"}, "k", "galaxy");
  EXPECT_EQ(expected, takeException(env_));
  EXPECT_FALSE(isSet({"a", "b"}, "k", "galaxy"));
  EXPECT_EQ(expected, takeException(env_));
}

TEST_F(Reading, IsSetIsFalseForAMissingEntry) {
  EXPECT_TRUE(isSet({"a", "b"}, "k", "user"));
  EXPECT_TRUE(isSet({"a", "b"}, "k", nullptr));
  EXPECT_FALSE(isSet({"a", "b"}, "k", "session"));
  EXPECT_FALSE(isSet({"a", "b"}, "x", "user"));
  EXPECT_FALSE(isSet({"a", "x"}, "k", "user"));
  EXPECT_FALSE(isSet({"a"}, "b", "user"));
}

TEST_F(Reading, ExistsDistinguishesNodesAndKeys) {
  EXPECT_TRUE(exists({}, nullptr));
  EXPECT_TRUE(exists({"a", "b"}, nullptr));
  EXPECT_FALSE(exists({"a", "b", "k"}, nullptr));
  EXPECT_TRUE(exists({"a", "b"}, "k"));
  EXPECT_FALSE(exists({"a"}, "b"));
  EXPECT_FALSE(exists({"a", "b"}, "x"));
  EXPECT_FALSE(exists({"x"}, "k"));
}

TEST_F(Reading, IsChildNodeReportsAMissingChild) {
  EXPECT_TRUE(isChildNode({"a"}, "b"));
  EXPECT_FALSE(isChildNode({"a", "b"}, "k"));
  EXPECT_FALSE(isChildNode({"a"}, "x"));
  EXPECT_EQ(kNotFound + std::string("a.x"), takeException(env_));
}

TEST_F(Reading, AllChildrenAreListedOrKeysOrNodesAlone) {
  EXPECT_EQ((Names{"b", "s"}), children({"a"}, 0));
  EXPECT_EQ(Names{"s"}, children({"a"}, 1));
  EXPECT_EQ(Names{"b"}, children({"a"}, -5));
  EXPECT_EQ(Names(), children({"spare"}, 0));
  EXPECT_NE(nativeGetChildren(env_, nullptr, handle_, path({"spare"}), 1), nullptr);
  EXPECT_EQ(nativeGetChildren(env_, nullptr, handle_, path({"a", "x"}), 0), nullptr);
  EXPECT_EQ(kNotFound + std::string("a.x"), takeException(env_));
}

TEST_F(Reading, ThousandsOfChildrenMakeNoJniWarning) {
  Names names;
  for (int i = 1000; i < 4000; ++i) {
    names.push_back("n" + std::to_string(i));
    addNode(entryAt({"spare"}), names.back());
  }
  EXPECT_EQ(names, children({"spare"}, 0));
}

TEST_F(Reading, AMissingChildAndANodeForAKeyFailDifferently) {
  using namespace KORVEN::settings::core;
  const auto node = entryAt({"a"});
  EXPECT_EQ(entryAt({"a", "s"}), getChildFromJava(env_, node, str("s"), true));
  EXPECT_EQ(entryAt({"a", "b"}), getChildFromJava(env_, node, str("b"), false));
  EXPECT_THROW(getChildFromJava(env_, node, str("b"), true), Failure<NotAKeyName>);
  EXPECT_THROW(getChildFromJava(env_, node, str("x"), true), Failure<NoSuchKey>);
  try {
    getChildFromJava(env_, node, str("x"), false);
    FAIL();
  } catch (const Failure<NoSuchNode>& e) {
    EXPECT_EQ(e.GetMessageTxt(), "\"a\" has no entry \"x\".");
  }
}

}  // namespace
