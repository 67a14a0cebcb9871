// Every native that has a catch clause, at each operation of the service that it calls, with every
// kind of failure: the Java class and the text, the swallowed failures, and the result.
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
using namespace test;
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
  std::string native;
  std::string path;  // in messages
  bool isQuery;
  Names operations;
  std::set<std::string> swallowed;
  std::function<bool()> call;  // returns whether the result was the default
};

class NativeFailures : public ContractTest {
 protected:
  void SetUp() override {
    ContractTest::SetUp();
    context_ = nativeCreateTransactionContext(env_, nullptr);
    listener_ = make("com/velonix/services/settings/RecordingListener", "()V");
    listSites();
  }
  void TearDown() override {
    nativeDeleteTransactionContext(env_, nullptr, context_);
    ContractTest::TearDown();
  }

  // A native with a result.
  template <class Native>
  void gives(const std::string& name, const std::string& path, const Names& operations,
             const Native& native, bool isQuery = false,
             const std::set<std::string>& swallowed = {}) {
    sites_.push_back({name, path, isQuery, operations, swallowed, [=] { return !native(); }});
  }
  // A native without a result.
  template <class Native>
  void does(const std::string& name, const std::string& path, const Names& operations,
            const Native& native, bool isQuery = false) {
    const auto call = [=] {
      native();
      return true;
    };
    sites_.push_back({name, path, isQuery, operations, {}, call});
  }

  void handled(bool asRuntime) {
    try {
      k_->isKey();
    } catch (...) {
      handleException(env_, nodePath_, key_, asRuntime);
    }
  }

  void listSites() {
    const std::set<std::string> absent = {"NoSuchKey", "NoSuchNode"};
    const std::set<std::string> absentOrOther = {"NoSuchKey", "NoSuchNode", "NotANodeName",
                                                 "NotAKeyName"};
    does("handleException", "n.x.k", {"isKey"}, [this] { handled(false); });
    does(
        "handleException of a query", "n.x.k", {"isKey"}, [this] { handled(true); }, true);
    gives("nativeGet", "n.x.k", {"findDescendant", "isKey", "getValue", "getKeyType"},
          [this] { return nativeGet(env_, nullptr, handle_, nodePath_, key_, user_); });
    gives("nativeGetLevel", "n.x.k", {"findDescendant", "isSet"},
          [this] { return nativeGetLevel(env_, nullptr, handle_, nodePath_, key_); });
    gives(
        "nativeIsSet", "n.x.k", {"findDescendant", "isSet"},
        [this] { return nativeIsSet(env_, nullptr, handle_, nodePath_, key_, user_); }, true,
        absentOrOther);
    gives(
        "nativeExists", "n.x.k", {"findDescendant", "getChild"},
        [this] { return nativeExists(env_, nullptr, handle_, nodePath_, key_); }, true, absent);
    gives("nativeIsChildNode", "n.x.m", {"findDescendant", "isKey"},
          [this] { return nativeIsChildNode(env_, nullptr, handle_, nodePath_, str("m")); });
    gives(
        "nativeGetChildren", "n.x", {"findDescendant", "getChildren", "isKey", "getName"},
        [this] { return nativeGetChildren(env_, nullptr, handle_, nodePath_, 1); }, true);
    gives("nativeLoadSettings", "f.xml", {"importAsStandaloneObject"},
          [this] { return nativeLoadSettings(env_, nullptr, str("f.xml")); });
    gives("nativeLoadSettings of no file", "", {"createSettingsNode"},
          [this] { return nativeLoadSettings(env_, nullptr, nullptr); });
    does("nativeSet", "n.x.k", {"findDescendant", "setAny"},
         [this] { nativeSet(env_, nullptr, 0, handle_, nodePath_, key_, five_, user_); });
    does("nativeSet of a transaction", "n.x.k", {"findDescendant", "getChild", "getPath"},
         [this] { nativeSet(env_, nullptr, context_, handle_, nodePath_, key_, five_, user_); });
    does("nativeUnset", "n.x.k", {"findDescendant", "unset"},
         [this] { nativeUnset(env_, nullptr, handle_, nodePath_, key_, user_); });
    does("nativeAddKey", "n.x.new", {"findDescendant", "createSettingsNode", "attachTo", "setAny"},
         [this] {
           nativeAddKey(env_, nullptr, handle_, nodePath_, str("new"), five_, user_, nullptr,
                        nullptr);
         });
    does("nativeAddNode", "n.x.new", {"findDescendant", "createSettingsNode", "attachTo"}, [this] {
      nativeAddNode(env_, nullptr, handle_, nodePath_, str("new"), nullptr, nullptr);
    });
    does("nativeDelete of a key", "n.x.k", {"findDescendant", "getChild", "isKey", "removeKey"},
         [this] { nativeDelete(env_, nullptr, handle_, nodePath_, key_); });
    does("nativeDelete of a node", "n.x.m", {"removeNode"},
         [this] { nativeDelete(env_, nullptr, handle_, nodePath_, str("m")); });
    does("nativeCopySubtree", "n.x", {"findDescendant", "copySubtree"}, [this] {
      nativeCopySubtree(env_, nullptr, handle_, nodePath_, handle_, nullptr, str("new"));
    });
    does("nativeAddRemoveListener", "n.x.k", {"findDescendant", "getChild", "canHaveListeners"},
         [this] {
           nativeAddRemoveListener(env_, nullptr, key_, handle_, nodePath_, key_, listener_);
         });
  }

  static std::string expected(const Row& row, const Site& site) {
    if (!row.javaClass || site.swallowed.count(row.name)) return "";
    return std::string(site.isQuery ? RUNTIME : row.javaClass) + ": " + row.before +
           (row.hasPath ? site.path : "") + row.after;
  }

  std::vector<Site> sites_;
  jlong context_ = 0;
  jobject listener_ = nullptr;
};

TEST_F(NativeFailures, EachFailureBecomesItsJavaExceptionWhereverItIsThrown) {
  for (const Site& site : sites_) {
    for (const std::string& operation : site.operations) {
      for (const Row& row : kRows) {
        SCOPED_TRACE(site.native + ", " + row.name + " from " + operation);
        ASSERT_EQ(env_->PushLocalFrame(32), JNI_OK);
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
  for (const Site& site : sites_) {
    const std::string operation = site.operations.back();
    SCOPED_TRACE(site.native);
    failAt(operation, [this] {
      env_->ThrowNew(env_->FindClass("java/lang/ArithmeticException"), "earlier");
      throw Failure<ValidationFailure>("refused");
    });
    site.call();
    const bool sets = operation == "setAny" || site.native == "nativeSet of a transaction";
    EXPECT_EQ(sets                           ? RUNTIME ": Attempting to set"
              : site.native == "nativeUnset" ? RUNTIME ": Attempting to unset"
              : site.isQuery                 ? RUNTIME ": refused"
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
