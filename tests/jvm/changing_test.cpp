// The natives that change, transactions, and the reference counts around them.
#include "nativesettings/changing.h"

#include <limits>

#include "bridge/java_layer.h"
#include "nativesettings/reading.h"
#include "nativesettings/transactions.h"
#include "service/validators.h"
#include "tests/support/bridge_test.h"
#include "tests/support/patched_java.h"

namespace {

using namespace nativesettings;
using test::BridgeTest;
using test::PatchedJava;
using test::takeException;
using Names = std::vector<std::string>;

#define SETTINGS_PACKAGE "com.velonix.services.settings."

class Changing : public BridgeTest {
 protected:
  std::string set(const Names& node, const char* key, jobject settingInfo,
                  const char* level = "user", jlong context = 0) {
    nativeSet(env_, nullptr, context, handle_, path(node), str(key), settingInfo,
              level ? str(level) : nullptr);
    return takeException(env_);
  }
  std::string unset(const Names& node, const char* key, const char* level) {
    nativeUnset(env_, nullptr, handle_, path(node), str(key), str(level));
    return takeException(env_);
  }
  std::string addKey(const Names& node, const char* name, jobject settingInfo,
                     const char* first = nullptr, const char* second = nullptr) {
    nativeAddKey(env_, nullptr, handle_, path(node), str(name), settingInfo, str("user"),
                 first ? str(first) : nullptr, second ? str(second) : nullptr);
    return takeException(env_);
  }
  std::string addNode(const Names& node, const char* name) {
    nativeAddNode(env_, nullptr, handle_, path(node), str(name), nullptr, nullptr);
    return takeException(env_);
  }
  std::string remove(const Names& node, const char* name) {
    nativeDelete(env_, nullptr, handle_, path(node), str(name));
    return takeException(env_);
  }
  std::string copy(const Names& to, const Names& from, const char* name) {
    nativeCopySubtree(env_, nullptr, handle_, path(to), handle_, path(from), str(name));
    return takeException(env_);
  }
  std::string read(const Names& node, const char* key, const char* level = nullptr) {
    jobject got =
        nativeGet(env_, nullptr, handle_, path(node), str(key), level ? str(level) : nullptr);
    return got ? show(valueOf(got)) : takeException(env_);
  }
};

TEST_F(Changing, ASetStoresAtItsLevelOnly) {
  EXPECT_EQ(set({"a", "b"}, "k", info(integer(12)), "session"), "");
  EXPECT_EQ(read({"a", "b"}, "k"), "12");
  EXPECT_EQ(read({"a", "b"}, "k", "user"), "7");
  EXPECT_EQ(unset({"a", "b"}, "k", "session"), "");
  EXPECT_EQ(read({"a", "b"}, "k"), "7");
}

TEST_F(Changing, EachFailureOfASetHasItsExceptionAndChangesNothing) {
  const std::string missing = SETTINGS_PACKAGE "SettingNotFoundException: ";
  const std::string noKind =
      SETTINGS_PACKAGE "SettingUnsupportedTypeRuntimeException: Unsupported type";
  const std::string unknownLevel = "java.lang.RuntimeException: Unsupported level for a.b.k";
  const std::string null = "java.lang.RuntimeException: std::exception for \"a.b.k\": null value";
  const Names ab = {"a", "b"};
  jobject one = info(integer(1));
  EXPECT_EQ(missing + "x.k", set({"x"}, "k", one));
  EXPECT_EQ(missing + "a.x", set({"a"}, "x", one));
  EXPECT_EQ(unknownLevel, set(ab, "k", one, "galaxy"));
  EXPECT_EQ(unknownLevel, set(ab, "k", one, nullptr));
  EXPECT_EQ(noKind, set(ab, "k", info(env_->NewIntArray(1))));
  EXPECT_EQ(noKind, set(ab, "k", infoOfClass(nullptr))) << "neither value nor type";
  EXPECT_EQ(null, set(ab, "k", infoOfClass(env_->FindClass("java/lang/Integer"))));
  EXPECT_EQ(null, set(ab, "k", nullptr));
  EXPECT_EQ(set(ab, "k", make("ThrowingInfo", "(Z)V", JNI_TRUE)), "") << "getValue() throws";
  EXPECT_EQ(set(ab, "k", make("ThrowingInfo", "(Z)V", JNI_FALSE)),
            "java.lang.RuntimeException: Attempting to set")
      << "getType() throws";
  const std::string wrongType = set({"a", "b"}, "k", info(str("text")));
  EXPECT_EQ(wrongType.find(SETTINGS_PACKAGE "SettingValidationException: "), 0u) << wrongType;
  EXPECT_EQ(read({"a", "b"}, "k"), "7");
}

TEST_F(Changing, EachFailureOfAnUnsetHasItsException) {
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: x.k", unset({"x"}, "k", "user"));
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: a.x", unset({"a"}, "x", "user"));
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: a.b.k", unset({"a", "b"}, "k", "session"))
      << "nothing is set there";
  EXPECT_EQ(unset({"a", "b"}, "k", "galaxy"),
            "java.lang.RuntimeException: Unsupported level for a.b.k");
}

TEST_F(Changing, KeysAndNodesAreAddedAndDeleted) {
  EXPECT_EQ(addKey({"spare"}, "fresh", info(str("v"))), "");
  EXPECT_EQ(read({"spare"}, "fresh"), "v");
  EXPECT_EQ(addNode({"spare"}, "deeper"), "");
  EXPECT_EQ(addKey({"spare", "deeper"}, "k2", info(integer(3))), "");
  EXPECT_EQ(remove({"spare"}, "fresh"), "");
  EXPECT_EQ(remove({}, "spare"), "");
  EXPECT_FALSE(entryAt({"spare"}));
}

TEST_F(Changing, EachFailureOfAddAndDeleteHasItsException) {
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: x.y", addNode({"x", "y"}, "n"))
      << "the parent's path alone";
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNameDuplicationException: a.b", addNode({"a"}, "b"));
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNameDuplicationException: a.s",
            addKey({"a"}, "s", info(integer(1))));
  for (const char* bad : {"", "1x", "a.b", "a b", "\xC3\xA4"}) {
    EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: a." + std::string(bad),
              addNode({"a"}, bad));
    EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: a." + std::string(bad),
              addKey({"a"}, bad, info(integer(1))));
  }
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: a.x", remove({"a"}, "x"));
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: x", remove({"x"}, "k"));
}

TEST_F(Changing, AKeyWhoseFirstValueIsRefusedStaysWithoutAValue) {
  EXPECT_EQ(SETTINGS_PACKAGE "SettingUnsupportedTypeRuntimeException: Unsupported type",
            addKey({"spare"}, "fresh", info(env_->NewIntArray(1))));
  ASSERT_TRUE(entryAt({"spare", "fresh"}));
  EXPECT_EQ(read({"spare"}, "fresh"), "null");
}

TEST_F(Changing, ASingleValidatorStringIsIgnored) {
  EXPECT_EQ(addKey({"spare"}, "one", info(integer(1)), "no.such.Validator", nullptr), "");
  EXPECT_EQ(addKey({"spare"}, "two", info(integer(1)), nullptr, "1..2"), "");
  const std::string both = addKey({"spare"}, "three", info(integer(1)), "no.such.Validator", "");
  EXPECT_NE(std::string::npos, both.find("no.such.Validator")) << both;
}

TEST_F(Changing, ASubtreeIsCopiedBelowTheFirstPath) {
  EXPECT_EQ(copy({"spare"}, {"a"}, "again"), "");
  EXPECT_EQ(read({"spare", "again", "b"}, "k"), "7");
  EXPECT_EQ(read({"spare", "again", "b"}, "k", "factory"), "1");
  EXPECT_EQ(copy({"spare"}, {"a"}, "again"),
            "java.lang.UnsupportedOperationException: Path already contains children: spare");
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: x", copy({"x"}, {"a"}, "c"));
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: spare", copy({"spare"}, {"x"}, "c"));
}

TEST_F(Changing, KeyNamesAreIdentifiers) {
  const std::string longest(63, 'n');
  for (const std::string& good : {std::string("a"), std::string("Z9_"), longest}) {
    EXPECT_TRUE(nativeIsKeyNameValid(env_, nullptr, str(good))) << good;
  }
  for (const std::string& bad : {std::string(""), std::string("_a"), std::string("9"),
                                 std::string("a-b"), std::string("a\xC0\x80"), longest + "n"}) {
    EXPECT_FALSE(nativeIsKeyNameValid(env_, nullptr, str(bad))) << bad;
  }
  EXPECT_FALSE(nativeIsKeyNameValid(env_, nullptr, nullptr));
}

TEST_F(Changing, ReadingAndSettingLeaveNoReferenceBehind) {
  set({"a", "b"}, "k", info(integer(1)));
  read({"a", "b"}, "k");
  const PatchedJava java(env_);
  jobject description = info(integer(2));
  jstring level = str("user");
  const long before = java.calls().lookups;
  nativeSet(env_, nullptr, 0, handle_, path({"a", "b"}), str("k"), description, level);
  nativeGet(env_, nullptr, handle_, path({"a", "b"}), str("k"), level);
  EXPECT_EQ(java.calls().globals, 0);
  EXPECT_EQ(java.calls().weakGlobals, 0);
  EXPECT_EQ(java.calls().frames, 0);
  // One look at java.lang.String for each path that this test itself makes.
  EXPECT_EQ(before + 2, java.calls().lookups) << "classes and methods are remembered";
}

class Transactions : public Changing {
 protected:
  void SetUp() override {
    Changing::SetUp();
    context_ = nativeCreateTransactionContext(env_, nullptr);
    processRoot_ = zlutil::settings::Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
    node_ = BridgeTest::addNode(processRoot_, "transactions");
    BridgeTest::addKey(node_, "one");
    BridgeTest::addKey(node_, "two");
    node_->setAny("one", 1, "session");
    process_ = reinterpret_cast<jlong>(&processRoot_);
  }
  void TearDown() override {
    nativeDeleteTransactionContext(env_, nullptr, context_);
    processRoot_->removeNode("transactions");
    node_.reset();
    Changing::TearDown();
  }

  void record(const char* key, jobject value) {
    const zljLocalReferenceFrame frame(env_, 16);
    nativeSet(env_, nullptr, context_, process_, path({"transactions"}), str(key), info(value),
              str("no level at all"));
    EXPECT_EQ(takeException(env_), "");
  }
  std::vector<std::string> problems(bool commit, const char* level = "session") {
    jobject list = commit ? nativeCommitTransaction(env_, nullptr, context_, str(level))
                          : nativeValidateTransaction(env_, nullptr, context_, str(level));
    if (!list) return {};
    std::vector<std::string> shown;
    auto array = static_cast<jobjectArray>(call(list, "toArray", "()[Ljava/lang/Object;"));
    for (jsize i = 0; i < env_->GetArrayLength(array); ++i) {
      const zljLocalReferenceFrame frame(env_, 4);
      shown.push_back(className(env_->GetObjectArrayElement(array, i)));
    }
    return shown;
  }
  boost::any value(const char* key) { return node_->getValue(key, ""); }

  jlong context_ = 0;
  jlong process_ = 0;
  test::SettingsPtr processRoot_;
  test::SettingsPtr node_;
};

TEST_F(Transactions, ARecordedChangeIsAppliedByTheCommit) {
  record("one", integer(10));
  record("two", str("t"));
  record("noSuchKey", str("t"));  // not recorded, and no failure
  EXPECT_EQ(boost::any_cast<int>(value("one")), 1);
  EXPECT_TRUE(problems(false).empty());
  EXPECT_EQ(boost::any_cast<int>(value("one")), 1);
  EXPECT_TRUE(problems(true).empty());
  EXPECT_EQ(boost::any_cast<int>(value("one")), 10);
  EXPECT_EQ(boost::any_cast<std::string>(value("two")), "t");
  node_->setAny("one", 11, "session");
  EXPECT_TRUE(problems(true).empty()) << "a context may be committed again";
  EXPECT_EQ(boost::any_cast<int>(value("one")), 10);
}

TEST_F(Transactions, AnEmptyContextAndTheNullContextDoNothing) {
  EXPECT_TRUE(problems(true).empty());
  EXPECT_TRUE(problems(false).empty());
  nativeDeleteTransactionContext(env_, nullptr, 0);
}

TEST_F(Transactions, OneProblemLeavesEverythingAsItWas) {
  record("one", integer(10));
  record("two", str("t"));
  record("one", str("of another type"));
  const std::vector<std::string> one(1, SETTINGS_PACKAGE "SettingValidity");
  EXPECT_EQ(one, problems(false));
  EXPECT_EQ(one, problems(true));
  EXPECT_EQ(boost::any_cast<int>(value("one")), 1);
  EXPECT_TRUE(value("two").empty());
}

TEST_F(Transactions, AnUnknownLevelAndAVanishedKeyAreProblems) {
  record("one", integer(10));
  EXPECT_EQ(problems(true, "galaxy").size(), 1u);
  node_->removeKey("one");
  EXPECT_EQ(problems(true).size(), 1u);
}

TEST_F(Transactions, ProblemsByTheThousandMakeNoJniWarning) {
  jstring value = str("of another type");
  for (int i = 0; i < 2000; ++i) record("one", value);
  EXPECT_EQ(problems(true).size(), 2000u);
}

}  // namespace
