// Every native that has a catch clause, at each operation of the service that it asks for, with
// every kind of failure: the Java class and the text, what is swallowed, and the result.
#include <set>
#include <stdexcept>

#include "nativesettings/changing.h"
#include "nativesettings/failures.h"
#include "nativesettings/handles.h"
#include "nativesettings/listeners.h"
#include "nativesettings/reading.h"
#include "nativesettings/transactions.h"
#include "service/failures.h"
#include "tests/bridge_contract/contract_test.h"

namespace {

using namespace KORVEN::settings::core;
using namespace nativesettings;
using namespace testing_support;
using zlutil::settings::Failure;

struct OnlyMsgID : IMsgIDException {
  BaseMsgID id{"OnlyMsgID", "of the table", {}};
  std::string GetMessageTxt() const override { return id.format(); }
  const BaseMsgID& GetMsgID() const override { return id; }
};
struct OnlyUser : IUserException {
  std::string GetMessageTxt() const override { return "for the user"; }
};
struct UserAndStandard : std::runtime_error, IUserException {
  UserAndStandard() : std::runtime_error("what()") {}
  std::string GetMessageTxt() const override { return "for the user"; }
};

struct Row {
  const char* name;
  void (*raise)();
  const char* javaClass;  // of a method that is no query
  const char* before;     // the message is before + the dotted path, if it has one, + after
  bool hasPath;
  const char* after;
};

#define ROW(TAG, ...) #TAG, [] { throw Failure<TAG>(__VA_ARGS__); }
#define NOT_FOUND SETTINGS_PACKAGE "SettingNotFoundException"
#define INVALID SETTINGS_PACKAGE "SettingValidationException"
#define RUNTIME "java.lang.RuntimeException"
#define NO_FILE "java.io.FileNotFoundException"

// U+0000, a supplementary character and half of one.
#define EVERY_CHARACTER "too large \xC0\x80 \xED\xA0\xBD\xED\xB8\x80 \xED\xA0\x80 ü"

const Row kRows[] = {
    {ROW(NotAKeyName, "p", "c"), NOT_FOUND, "", true, ""},
    {ROW(NoSuchKey, "p", "c"), NOT_FOUND, "", true, ""},
    {ROW(NoSuchNode, "p", "c"), NOT_FOUND, "", true, ""},
    {ROW(NotANodeName, "p", "c"), NOT_FOUND, "", true, ""},
    {ROW(UnSupportedLevel, "x"), RUNTIME, "Unsupported level for ", true, ""},
    {ROW(ValueNotDefinedForGivenLevel, "p", "x"), NOT_FOUND, "", true, ""},
    {ROW(DefaultValidationFailedOnVoidType, "p"), INVALID, "", true, ""},
    {ROW(ErrorAddingChildNodeOrKey, "p", "c", "r"),
     SETTINGS_PACKAGE "SettingNameDuplicationException", "", true, ""},
    {ROW(CantModifyValuesOnReadOnlyLevel, "p", "x", "r"), SETTINGS_PACKAGE "SettingAccessException",
     "", true, ""},
    {ROW(CannotMergeWithNodeContainsChildren, "p", "c"), "java.lang.UnsupportedOperationException",
     "Path already contains children: ", true, ""},
    {ROW(SaxParseException, "f", "3", "7", "bad"), NO_FILE, "f:3:7: bad", false, ""},
    {ROW(SaxUnknownException, "f", "odd"), NO_FILE, "f: odd", false, ""},
    {ROW(FileLoadingError, "f", "gone"), NO_FILE, "Settings file could not be loaded for \"", true,
     "\": f: gone"},
    {ROW(FailedToRunJavaValidator, "V", "1", "boom"), INVALID,
     "The Java validator (\"V\", \"1\") failed: boom", false, ""},
    {ROW(ValidationFailure, EVERY_CHARACTER), INVALID, EVERY_CHARACTER, false, ""},
    {ROW(CValidationError, "too small"), INVALID, "too small", false, ""},
    {ROW(JVMNotReadyForProcessingJavaFunction), INVALID, "IMsgIDException for \"", true,
     "\": The Java machine is not ready."},
    {ROW(StoreFailure, "s", "full"), INVALID, "IMsgIDException for \"", true,
     "\": Cannot write s: full"},
    {"only IMsgIDException", [] { throw OnlyMsgID(); }, INVALID, "IMsgIDException for \"", true,
     "\": of the table"},
    {"only IUserException", [] { throw OnlyUser(); }, INVALID, "IUserException for \"", true,
     "\": for the user"},
    {"IUserException and std::exception", [] { throw UserAndStandard(); }, INVALID,
     "IUserException for \"", true, "\": for the user"},
    {"only std::exception", [] { throw std::out_of_range("far"); }, RUNTIME,
     "std::exception for \"", true, "\": far"},
    {"unknown", [] { throw 42; }, nullptr, "", false, ""},
};

struct Site {
  const char* native;
  std::function<bool()> call;  // whether the result was the default
  const char* path;            // in messages
  bool isQuery;
  Names operations;
  std::set<std::string> swallowed;
};

class NativeFailures : public ContractTest {
 protected:
  void SetUp() override {
    ContractTest::SetUp();
    context_ = nativeCreateTransactionContext(env_, nullptr);
    listener_ = make("com/velonix/services/settings/RecordingListener", "()V");
  }
  void TearDown() override {
    nativeDeleteTransactionContext(env_, nullptr, context_);
    ContractTest::TearDown();
  }

  std::vector<Site> sites() {
    const std::set<std::string> absent = {"NoSuchKey", "NoSuchNode"};
    const std::set<std::string> absentOrOther = {"NoSuchKey", "NoSuchNode", "NotANodeName",
                                                 "NotAKeyName"};
    const auto handled = [this](bool asRuntime) {
      try {
        k_->isKey();
      } catch (...) {
        handleException(env_, nodePath_, key_, asRuntime);
      }
      return true;
    };
    return {
        {"handleException", [=] { return handled(false); }, "n.x.k", false, {"isKey"}, {}},
        {"handleException as a query", [=] { return handled(true); }, "n.x.k", true, {"isKey"}, {}},
        {"nativeGet",
         [this] { return !nativeGet(env_, nullptr, handle_, nodePath_, key_, user_); },
         "n.x.k",
         false,
         {"findDescendant", "isKey", "getValue", "getKeyType"},
         {}},
        {"nativeGetLevel",
         [this] { return !nativeGetLevel(env_, nullptr, handle_, nodePath_, key_); },
         "n.x.k",
         false,
         {"findDescendant", "isSet"},
         {}},
        {"nativeIsSet",
         [this] { return !nativeIsSet(env_, nullptr, handle_, nodePath_, key_, user_); },
         "n.x.k",
         true,
         {"findDescendant", "isSet"},
         absentOrOther},
        {"nativeExists",
         [this] { return !nativeExists(env_, nullptr, handle_, nodePath_, key_); },
         "n.x.k",
         true,
         {"findDescendant", "getChild"},
         absent},
        {"nativeIsChildNode",
         [this] { return !nativeIsChildNode(env_, nullptr, handle_, nodePath_, str("m")); },
         "n.x.m",
         false,
         {"findDescendant", "isKey"},
         {}},
        {"nativeGetChildren",
         [this] { return !nativeGetChildren(env_, nullptr, handle_, nodePath_, 1); },
         "n.x",
         true,
         {"findDescendant", "getChildren", "isKey", "getName"},
         {}},
        {"nativeSet",
         [this] {
           nativeSet(env_, nullptr, 0, handle_, nodePath_, key_, five_, user_);
           return true;
         },
         "n.x.k",
         false,
         {"findDescendant", "setAny"},
         {}},
        {"nativeSet of a transaction",
         [this] {
           nativeSet(env_, nullptr, context_, handle_, nodePath_, key_, five_, user_);
           return true;
         },
         "n.x.k",
         false,
         {"findDescendant", "getChild", "getPath"},
         {}},
        {"nativeUnset",
         [this] {
           nativeUnset(env_, nullptr, handle_, nodePath_, key_, user_);
           return true;
         },
         "n.x.k",
         false,
         {"findDescendant", "unset"},
         {}},
        {"nativeAddKey",
         [this] {
           nativeAddKey(env_, nullptr, handle_, nodePath_, str("new"), five_, user_, nullptr,
                        nullptr);
           return true;
         },
         "n.x.new",
         false,
         {"findDescendant", "createSettingsNode", "attachTo", "setAny"},
         {}},
        {"nativeAddNode",
         [this] {
           nativeAddNode(env_, nullptr, handle_, nodePath_, str("new"), nullptr, nullptr);
           return true;
         },
         "n.x.new",
         false,
         {"findDescendant", "createSettingsNode", "attachTo"},
         {}},
        {"nativeDelete of a key",
         [this] {
           nativeDelete(env_, nullptr, handle_, nodePath_, key_);
           return true;
         },
         "n.x.k",
         false,
         {"findDescendant", "getChild", "isKey", "removeKey"},
         {}},
        {"nativeDelete of a node",
         [this] {
           nativeDelete(env_, nullptr, handle_, nodePath_, str("m"));
           return true;
         },
         "n.x.m",
         false,
         {"removeNode"},
         {}},
        {"nativeCopySubtree",
         [this] {
           nativeCopySubtree(env_, nullptr, handle_, nodePath_, handle_, nullptr, str("new"));
           return true;
         },
         "n.x",
         false,
         {"findDescendant", "copySubtree"},
         {}},
        {"nativeAddRemoveListener",
         [this] {
           nativeAddRemoveListener(env_, nullptr, key_, handle_, nodePath_, key_, listener_);
           return true;
         },
         "n.x.k",
         false,
         {"findDescendant", "getChild", "canHaveListeners"},
         {}},
        {"nativeLoadSettings",
         [this] { return nativeLoadSettings(env_, nullptr, str("f.xml")) == 0; },
         "f.xml",
         false,
         {"importAsStandaloneObject"},
         {}},
        {"nativeLoadSettings of no file",
         [this] { return nativeLoadSettings(env_, nullptr, nullptr) == 0; },
         "",
         false,
         {"createSettingsNode"},
         {}},
    };
  }

  static std::string expected(const Row& row, const Site& site) {
    if (!row.javaClass || site.swallowed.count(row.name)) return "";
    return std::string(site.isQuery ? RUNTIME : row.javaClass) + ": " + row.before +
           (row.hasPath ? site.path : "") + row.after;
  }

  jlong context_ = 0;
  jobject listener_ = nullptr;
};

TEST_F(NativeFailures, EachBecomesItsJavaExceptionWhereverItIsThrown) {
  for (const Site& site : sites()) {
    for (const std::string& operation : site.operations) {
      for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(site.native) + ", " + row.name + " from " + operation);
        ASSERT_EQ(JNI_OK, env_->PushLocalFrame(32));
        failAt(operation, row.raise);
        EXPECT_TRUE(site.call());
        EXPECT_EQ(expected(row, site), takeException(env_));
        env_->PopLocalFrame(nullptr);
      }
    }
  }
}

// A service that calls Java may leave an exception behind.
TEST_F(NativeFailures, APendingJavaExceptionIsReplaced) {
  for (const Site& site : sites()) {
    const std::string name(site.native);
    const std::string operation = site.operations.back();
    SCOPED_TRACE(name);
    failAt(operation, [this] {
      env_->ThrowNew(env_->FindClass("java/lang/ArithmeticException"), "earlier");
      throw Failure<ValidationFailure>("refused");
    });
    site.call();
    const bool sets = operation == "setAny" || name == "nativeSet of a transaction";
    EXPECT_EQ(sets                    ? RUNTIME ": Attempting to set"
              : name == "nativeUnset" ? RUNTIME ": Attempting to unset"
              : site.isQuery          ? RUNTIME ": refused"
                                      : INVALID ": refused",
              takeException(env_));
  }
}

TEST_F(NativeFailures, AMissingExceptionClassSurfacesAsTheJvmsOwnException) {
  static jzi::ConsInfo missing("com/velonix/services/settings/NoSuchClass", "");
  throwJavaExceptionHelper(env_, missing, "x");
  EXPECT_NE(std::string::npos, takeException(env_).find("NoSuchClass"));
}

}  // namespace
