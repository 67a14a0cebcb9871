// The calls of the natives to the service and the process, word for word, and their results.
#include "bridge/java_layer.h"
#include "bridge/shared_object.h"
#include "nativesettings/changing.h"
#include "nativesettings/handles.h"
#include "nativesettings/levels.h"
#include "nativesettings/reading.h"
#include "tests/bridge_contract/contract_test.h"
#include "tests/support/patched_java.h"
#include "values/java/class_records.h"
#include "values/java/object_array.h"

namespace {

using namespace nativesettings;
using namespace test;

#define FIND "findDescendant /n.x"

using Calls = ContractTest;

TEST_F(Calls, ReadingCallsTheServiceOnceAndInOrder) {
  fakeHost().kind = 7;
  const auto get = [&](jstring level) {
    return show(nativeGet(env_, nullptr, handle_, nodePath_, key_, level));
  };
  EXPECT_EQ(get(nullptr), "null class java.lang.Integer");
  EXPECT_EQ((Names{FIND, "getValue k \"\"", "getKeyType k"}), calls());
  fakeHost().kind = boost::none;
  EXPECT_EQ(get(user_), "null null");
  EXPECT_EQ((Names{FIND, "getValue k \"user\"", "getKeyType k"}), calls());
  fakeHost().value = 5;
  EXPECT_EQ(get(user_), "5 null");
  EXPECT_EQ((Names{FIND, "getValue k \"user\""}), calls());

  const auto level = [&] { return text(nativeGetLevel(env_, nullptr, handle_, nodePath_, key_)); };
  fakeHost().setLevel = "workgroup";
  EXPECT_EQ(level(), "workgroup");
  EXPECT_EQ((Names{FIND, "isSet k \"session\"", "isSet k \"user\"", "isSet k \"workgroup\""}),
            calls());
  fakeHost().setLevel = "none";
  EXPECT_EQ(level(), "null");
  EXPECT_EQ(calls().size(), 5u);
  EXPECT_FALSE(nativeIsSet(env_, nullptr, handle_, nodePath_, key_, nullptr));
  EXPECT_EQ((Names{FIND, "isSet k \"\""}), calls());

  EXPECT_TRUE(nativeExists(env_, nullptr, handle_, nodePath_, nullptr));
  EXPECT_TRUE(nativeExists(env_, nullptr, handle_, nodePath_, key_));
  EXPECT_FALSE(nativeExists(env_, nullptr, handle_, nodePath_, str("m")));
  EXPECT_EQ((Names{FIND, FIND, "getChild k", FIND, "getChild m"}), calls());
  EXPECT_TRUE(nativeIsChildNode(env_, nullptr, handle_, nodePath_, str("m")));
  EXPECT_EQ(Names{FIND "/m"}, calls());

  const auto children = [&](int selector) {
    return texts(nativeGetChildren(env_, nullptr, handle_, nodePath_, selector));
  };
  EXPECT_EQ((Names{"k", "d.1", "m"}), children(0));
  EXPECT_EQ((Names{"k", "d.1"}), children(2));
  EXPECT_EQ(Names{"m"}, children(-2));
  EXPECT_EQ((Names{FIND, "getChildren", FIND, "getChildren", FIND, "getChildren"}), calls());
}

TEST_F(Calls, ChangingCallsTheServiceOnceAndInOrder) {
  nativeSet(env_, nullptr, 0, handle_, nodePath_, key_, five_, user_);
  EXPECT_EQ((Names{FIND, "setAny k 5 \"user\""}), calls());
  nativeUnset(env_, nullptr, handle_, nodePath_, key_, user_);
  EXPECT_EQ((Names{FIND, "unset k \"user\""}), calls());
  nativeAddKey(env_, nullptr, handle_, nodePath_, str("new"), five_, user_, str("V"), str("1"));
  EXPECT_EQ((Names{FIND, "createSettingsNode new key true V,1", "attachTo new to n.x", FIND,
                   "setAny new 5 \"user\""}),
            calls());
  nativeAddNode(env_, nullptr, handle_, nodePath_, str("new"), nullptr, str("1"));
  EXPECT_EQ((Names{FIND, "createSettingsNode new node true", "attachTo new to n.x"}), calls());
  nativeDelete(env_, nullptr, handle_, nodePath_, key_);
  nativeDelete(env_, nullptr, handle_, nodePath_, str("m"));
  EXPECT_EQ((Names{FIND, "getChild k", "removeKey k", FIND, "getChild m", "removeNode m"}),
            calls());
  nativeCopySubtree(env_, nullptr, handle_, nullptr, handle_, nodePath_, str("new"));
  nativeCopySubtree(env_, nullptr, handle_, nullptr, handle_, path({"none"}), str("new"));
  EXPECT_EQ((Names{FIND, "copySubtree to root from n.x as new", "findDescendant /none",
                   "copySubtree to root from null as new"}),
            calls());
}

TEST_F(Calls, AMissingTreeIsARuntimeException) {
  EXPECT_EQ(nativeGetZvmRoot(env_, nullptr, 0), 0);
  EXPECT_EQ(takeException(env_), "java.lang.RuntimeException: cannot find root");
  EXPECT_EQ(nativeLoadSettings(env_, nullptr, str("f.xml")), 0);
  EXPECT_EQ(takeException(env_),
            "java.lang.RuntimeException: Failed to create settings tree for f.xml");
  fakeHost().makesNothing = true;
  EXPECT_EQ(nativeLoadSettings(env_, nullptr, nullptr), 0);
  EXPECT_EQ(takeException(env_),
            "java.lang.RuntimeException: Failed to create settings tree for __STANDALONE_ROOT__");
  EXPECT_EQ((Names{"getSettingsRoot 1", "importAsStandaloneObject f.xml",
                   "createSettingsNode __STANDALONE_ROOT__ node true"}),
            calls());
  EXPECT_EQ(text(nativeGetFactoryDir(env_, nullptr, handle_)), "factory of 77");
}

TEST_F(Calls, TheTestEnvironmentIsPrintedAndReadBack) {
  const auto set = [&](const std::string& factory, const std::string& user) {
    return text(nativeSetEnv(env_, nullptr, str(factory), str(user)));
  };
  nativeUnsetEnv(env_, nullptr);
  fakeHost().ignoresSetenv = true;
  EXPECT_EQ(set("/f", "/u"), "SETTINGS_FACTORYDIR is set to nothing");
  fakeHost().ignoresSetenv = false;
  EXPECT_EQ(set("/f", "/u"), "/f");
  const Names lines = {"setenv Command /f.\n", "setenv Command /u.\n"};
  EXPECT_EQ((Names{lines[0], lines[1], lines[0], lines[1]}), fakeHost().printed);
  for (const char* odd : {"a\xC0\x80", "a\xED\xA0\x80"}) {
    const std::string reason = " to \"" + std::string(odd) +
                               "\": the environment holds neither U+0000 nor half a surrogate "
                               "pair. Nothing was set.";
    EXPECT_EQ(set(odd, "/u2"), "null");
    EXPECT_EQ("java.lang.RuntimeException: Cannot set SETTINGS_FACTORYDIR" + reason,
              takeException(env_));
    EXPECT_EQ(set("/f2", odd), "null");
    EXPECT_EQ("java.lang.RuntimeException: Cannot set SETTINGS_USERDIR" + reason,
              takeException(env_));
    EXPECT_STREQ("/f", std::getenv("SETTINGS_FACTORYDIR"));
    EXPECT_STREQ("/u", std::getenv("SETTINGS_USERDIR"));
  }
}

TEST_F(Calls, AnExceptionThatNoCallerReceivesIsPrinted) {
  jobject throwing = info(make("java/lang/RuntimeException", "(Ljava/lang/String;)V", str("why")));
  PatchedJava java(env_);
  nativeSet(env_, nullptr, 0, handle_, nodePath_, key_, throwing, user_);
  EXPECT_FALSE(env_->ExceptionCheck());
  EXPECT_EQ(Names{FIND}, calls());
  EXPECT_EQ(java.calls().described, 1);
  java.failOn(1);
  EXPECT_FALSE(
      jzi::detail::makeSharedObject(env_, key_, &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef));
  env_->ExceptionClear();
  EXPECT_EQ(java.calls().described, 2);
}

TEST_F(Calls, MoreElementsThanAJavaArrayHoldsAreRefusedBeforeAnyIsMade) {
  EXPECT_THROW(newObjectArray(env_, std::size_t{1} << 31, getStringClass(env_),
                              [](std::size_t) -> jobject {
                                ADD_FAILURE();
                                return nullptr;
                              }),
               boost::numeric::positive_overflow);
  EXPECT_FALSE(env_->ExceptionCheck());
}

}  // namespace
