// The proxy that runs Java validators, called as the service calls it.
#include "nativesettings/java_validator.h"

#include <thread>

#include "service/failures.h"
#include "tests/support/bridge_test.h"
#include "tests/support/patched_java.h"

namespace {

using namespace KORVEN::settings::core;
using nativesettings::javaValidator;
using test::takeException;
using zlutil::settings::Failure;

constexpr const char* kRange = "com.velonix.services.settings.validators.Range";

class JavaValidator : public test::BridgeTest {
 protected:
  // Returns "" if the value is valid, else "tag: message".
  std::string validate(const std::string& first, const std::string& second,
                       const boost::any& value) {
    try {
      javaValidator(first, second, entryAt({"a", "b"}), "k", value);
      return "";
    } catch (const Failure<ValidationFailure>& e) {
      return "refused: " + e.GetMessageTxt();
    } catch (const Failure<FailedToRunJavaValidator>& e) {
      return "failed: " + e.GetMessageTxt();
    } catch (const Failure<JVMNotReadyForProcessingJavaFunction>&) {
      return "not ready";
    }
  }
};

TEST_F(JavaValidator, TheAnswerOfTheValidatorDecides) {
  EXPECT_EQ(validate(kRange, "1..5", 3), "");
  EXPECT_EQ(validate(kRange, "1..5", 6).find("refused: "), 0u);
}

TEST_F(JavaValidator, AValidatorThatCannotRunIsNamedWithItsTwoStrings) {
  const std::string missing = validate("no.such.Validator", "x", 3);
  EXPECT_EQ(missing.find("failed: The Java validator (\"no.such.Validator\", \"x\") failed: "), 0u)
      << missing;
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaValidator, AnEarlierPendingExceptionIsNoFailureOfTheValidator) {
  env_->ThrowNew(env_->FindClass("java/lang/ArithmeticException"), "earlier");
  EXPECT_EQ(validate(kRange, "1..5", 3), "");
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaValidator, ItRunsOnThreadsThatTheJvmDoesNotKnow) {
  std::string good, bad;
  std::thread([&] {
    good = validate(kRange, "1..5", 3);
    bad = validate(kRange, "1..5", 6);
  }).join();
  EXPECT_EQ(good, "");
  EXPECT_EQ(bad.find("refused: "), 0u);
}

TEST_F(JavaValidator, ItLeavesNoReferenceBehind) {
  validate(kRange, "1..5", 3);
  const test::PatchedJava java(env_);
  validate(kRange, "1..5", 3);
  validate(kRange, "1..5", 6);
  EXPECT_EQ(java.calls().globals, 0);
  EXPECT_EQ(java.calls().weakGlobals, 0);
  EXPECT_EQ(java.calls().frames, 0);
}

}  // namespace
