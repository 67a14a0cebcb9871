// The table of failures: what each C++ exception becomes in Java.
#include "nativesettings/failures.h"

#include <stdexcept>

#include "nativesettings/records.h"
#include "service/failures.h"
#include "tests/support/jvm.h"

namespace {

using namespace KORVEN::settings::core;
using testing_support::JvmTest;
using testing_support::takeException;
using zlutil::settings::Failure;

struct OnlyMsgID : std::exception, IMsgIDException {
  BaseMsgID id{"OnlyMsgID", "from the table", {}};
  std::string GetMessageTxt() const override { return id.format(); }
  const BaseMsgID& GetMsgID() const override { return id; }
};

struct OnlyUser : IUserException {
  std::string GetMessageTxt() const override { return "for the user"; }
};

struct Row {
  const char* name;
  void (*raise)();
  const char* inJava;         // class: message
  const char* inJavaAsQuery;  // the same when settings failures are RuntimeExceptions
};

#define SETTINGS_PACKAGE "com.velonix.services.settings."
#define NOT_FOUND SETTINGS_PACKAGE "SettingNotFoundException: a.b.k"
#define INVALID SETTINGS_PACKAGE "SettingValidationException: "
#define RUNTIME "java.lang.RuntimeException: "

const Row kRows[] = {
    {"NotAKeyName", [] { throw Failure<NotAKeyName>("b", "k"); }, NOT_FOUND, RUNTIME "a.b.k"},
    {"NoSuchKey", [] { throw Failure<NoSuchKey>("b", "k"); }, NOT_FOUND, RUNTIME "a.b.k"},
    {"NoSuchNode", [] { throw Failure<NoSuchNode>("b", "k"); }, NOT_FOUND, RUNTIME "a.b.k"},
    {"NotANodeName", [] { throw Failure<NotANodeName>("b", "k"); }, NOT_FOUND, RUNTIME "a.b.k"},
    {"UnSupportedLevel", [] { throw Failure<UnSupportedLevel>("x"); },
     RUNTIME "Unsupported level for a.b.k", RUNTIME "Unsupported level for a.b.k"},
    {"ValueNotDefinedForGivenLevel",
     [] { throw Failure<ValueNotDefinedForGivenLevel>("a.b.k", "user"); }, NOT_FOUND,
     RUNTIME "a.b.k"},
    {"DefaultValidationFailedOnVoidType",
     [] { throw Failure<DefaultValidationFailedOnVoidType>("a.b.k"); }, INVALID "a.b.k",
     RUNTIME "a.b.k"},
    {"ErrorAddingChildNodeOrKey",
     [] { throw Failure<ErrorAddingChildNodeOrKey>("b", "k", "taken"); },
     SETTINGS_PACKAGE "SettingNameDuplicationException: a.b.k", RUNTIME "a.b.k"},
    {"CantModifyValuesOnReadOnlyLevel",
     [] { throw Failure<CantModifyValuesOnReadOnlyLevel>("a.b.k", "factory", "read-only"); },
     SETTINGS_PACKAGE "SettingAccessException: a.b.k", RUNTIME "a.b.k"},
    {"CannotMergeWithNodeContainsChildren",
     [] { throw Failure<CannotMergeWithNodeContainsChildren>("a", "b"); },
     "java.lang.UnsupportedOperationException: Path already contains children: a.b.k",
     RUNTIME "Path already contains children: a.b.k"},
    {"SaxParseException", [] { throw Failure<SaxParseException>("f.xml", "3", "7", "no good"); },
     "java.io.FileNotFoundException: f.xml:3:7: no good", RUNTIME "f.xml:3:7: no good"},
    {"SaxUnknownException", [] { throw Failure<SaxUnknownException>("f.xml", "odd"); },
     "java.io.FileNotFoundException: f.xml: odd", RUNTIME "f.xml: odd"},
    {"FileLoadingError", [] { throw Failure<FileLoadingError>("f.xml", "gone"); },
     "java.io.FileNotFoundException: Settings file could not be loaded for \"a.b.k\": f.xml: gone",
     RUNTIME "Settings file could not be loaded for \"a.b.k\": f.xml: gone"},
    {"FailedToRunJavaValidator",
     [] { throw Failure<FailedToRunJavaValidator>("V", "1..2", "boom"); },
     INVALID "The Java validator (\"V\", \"1..2\") failed: boom",
     RUNTIME "The Java validator (\"V\", \"1..2\") failed: boom"},
    {"ValidationFailure", [] { throw Failure<ValidationFailure>("too large"); },
     INVALID "too large", RUNTIME "too large"},
    {"CValidationError", [] { throw Failure<CValidationError>("too small"); }, INVALID "too small",
     RUNTIME "too small"},
    {"any other IMsgIDException", [] { throw OnlyMsgID(); },
     INVALID "IMsgIDException for \"a.b.k\": from the table",
     RUNTIME "IMsgIDException for \"a.b.k\": from the table"},
    {"JVMNotReadyForProcessingJavaFunction",
     [] { throw Failure<JVMNotReadyForProcessingJavaFunction>(); },
     INVALID "IMsgIDException for \"a.b.k\": The Java machine is not ready.",
     RUNTIME "IMsgIDException for \"a.b.k\": The Java machine is not ready."},
    {"any other IUserException", [] { throw OnlyUser(); },
     INVALID "IUserException for \"a.b.k\": for the user",
     RUNTIME "IUserException for \"a.b.k\": for the user"},
    {"any other std::exception", [] { throw std::out_of_range("far"); },
     RUNTIME "std::exception for \"a.b.k\": far", RUNTIME "std::exception for \"a.b.k\": far"},
    {"anything else", [] { throw 42; }, "", ""},
};

class FailureTable : public JvmTest {
 protected:
  std::string translate(void (*raise)(), bool asRuntime) {
    try {
      raise();
    } catch (...) {
      nativesettings::handleException(env_, path({"a", "b"}), str("k"), asRuntime);
    }
    return takeException(env_);
  }
};

TEST_F(FailureTable, EachFailureBecomesItsJavaExceptionWithItsMessage) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.inJava, translate(row.raise, false));
    EXPECT_EQ(row.inJavaAsQuery, translate(row.raise, true));
  }
}

TEST_F(FailureTable, WithoutPathAndKeyTheMessageIsEmpty) {
  try {
    throw Failure<NoSuchKey>("b", "k");
  } catch (...) {
    nativesettings::handleException(env_, nullptr, nullptr, false);
  }
  EXPECT_EQ(SETTINGS_PACKAGE "SettingNotFoundException: ", takeException(env_));
}

TEST_F(FailureTable, AnExceptionThatWasPendingIsReplaced) {
  jobjectArray node = path({"a", "b"});
  jstring key = str("k");
  env_->ThrowNew(env_->FindClass("java/lang/ArithmeticException"), "earlier");
  try {
    throw Failure<NoSuchKey>("b", "k");
  } catch (...) {
    nativesettings::handleException(env_, node, key, false);
  }
  EXPECT_EQ(NOT_FOUND, takeException(env_));
}

TEST_F(FailureTable, AMissingExceptionClassSurfacesAsTheJvmsOwnException) {
  static jzi::ConsInfo missing("com/velonix/services/settings/NoSuchClass", "");
  nativesettings::throwJavaExceptionHelper(env_, missing, "x");
  EXPECT_NE(std::string::npos, takeException(env_).find("NoSuchClass"));
}

TEST_F(FailureTable, MessagesSurviveEveryCharacter) {
  const std::string odd = "\xC0\x80 \xED\xA0\xBD\xED\xB8\x80 \xED\xA0\x80 ü";
  try {
    throw Failure<ValidationFailure>(odd);
  } catch (...) {
    nativesettings::handleException(env_, nullptr, nullptr, false);
  }
  EXPECT_EQ(INVALID + odd, takeException(env_));
}

}  // namespace
