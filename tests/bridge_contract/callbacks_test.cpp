// Calls of Java that Java did not ask for: validators, events and the problems of a commit.
#include <boost/variant/get.hpp>

#include "nativesettings/changing.h"
#include "nativesettings/java_validator.h"
#include "nativesettings/listener_registry.h"
#include "nativesettings/listeners.h"
#include "nativesettings/transactions.h"
#include "service/events.h"
#include "service/failures.h"
#include "tests/bridge_contract/contract_test.h"
#include "tests/support/patched_java.h"
#include "values/java/class_records.h"

namespace {

using namespace KORVEN::settings::core;
using namespace nativesettings;
using namespace test;
using namespace zlutil::settings;

class Callbacks : public ContractTest {
 protected:
  std::string asked() {
    jclass cls = env_->FindClass("com/velonix/services/settings/SettingValidator");
    return text(env_->GetStaticObjectField(
        cls, env_->GetStaticFieldID(cls, "asked", "Ljava/lang/String;")));
  }
  template <class Event>
  void publish(const SettingsPtr& on, const Event& event) {
    zlutil::eventmgr::EventMgr::instance().publish(Event::EventType(), on->getID(), event);
  }
};

TEST_F(Callbacks, AValidatorReceivesTheValueAndItsPath) {
  javaValidator("accept", "second", inner_, "d.1", 5);
  EXPECT_EQ(asked(), "accept second 77 [n.x, m, inner] d.1 5");
  const PatchedJava java(env_);
  javaValidator("accept", "second", inner_, "k", std::string("v"));
  EXPECT_EQ((Names{"k", "v", "n.x", "m", "inner", "second", "accept"}), java.calls().strings);
}

TEST_F(Callbacks, TheAnswerOfAValidatorReachesTheCaller) {
  try {
    javaValidator("refuse", "", m_, "k", 5);
    FAIL();
  } catch (const Failure<ValidationFailure>& e) {
    EXPECT_EQ(e.GetMessageTxt(), "");
  }
  try {
    javaValidator("throw", "up", m_, "k", 5);
    FAIL();
  } catch (const Failure<FailedToRunJavaValidator>& e) {
    Names arguments;
    for (const MsgArgument& one : e.GetMsgID().arguments()) {
      arguments.push_back(boost::get<std::string>(one));
    }
    EXPECT_EQ((Names{"throw", "up", "up"}), arguments);
  }
}

TEST_F(Callbacks, WithoutValidatorsInJavaAValueIsValid) {
  for (const char* missing : {"com/velonix/services/settings/SettingValidator", "validate"}) {
    SCOPED_TRACE(missing);
    nativesettings_utilsUnload();
    const PatchedJava java(env_, {missing});
    EXPECT_NO_THROW(javaValidator("refuse", "why", m_, "k", 5));
    EXPECT_FALSE(env_->ExceptionCheck());
  }
  EXPECT_THROW(javaValidator("refuse", "why", m_, "k", 5), Failure<ValidationFailure>);
}

TEST_F(Callbacks, AnEventHasWholeNamesAndSaysWhetherItIsOfANode) {
  jobject listener = make("com/velonix/services/settings/RecordingListener", "()V");
  nativeAddRemoveListener(env_, nullptr, str("src"), handle_, nodePath_, nullptr, listener);
  publish(node_, SettingsValueChangeEvent(dotted_));
  publish(node_, SettingsAddNodeEvent(m_, inner_));
  publish(node_, SettingsRemoveNodeEvent(node_, k_));
  EXPECT_EQ(show(listener),
            "changed src[n.x]d.1 null false; added src[n.x, m]inner null true; "
            "removed src[n.x]k null false; ");
  // An event of a key without a parent is not delivered.
  publish(node_, SettingsValueChangeEvent(FakeSettings::make("loose", true, nullptr)));
  publish(node_, SettingsRemoveNodeEvent(nullptr, k_));
  EXPECT_EQ(show(listener), "");
  nativeAddRemoveListener(env_, nullptr, nullptr, handle_, nodePath_, nullptr, listener);
  publish(node_, SettingsValueChangeEvent(k_));
  EXPECT_EQ(show(listener), "");
}

TEST_F(Callbacks, AnEntryThatTakesNoListenersRegistersNone) {
  k_->takesListeners = false;
  jobject listener = make("com/velonix/services/settings/RecordingListener", "()V");
  nativeAddRemoveListener(env_, nullptr, str("src"), handle_, nodePath_, key_, listener);
  EXPECT_EQ(valueChangeListeners.size() + addNodeListeners.size() + removeNodeListeners.size(), 0u);
}

TEST_F(Callbacks, ACommitListsItsProblemsInOrderAndReturnsNullForNone) {
  const auto top = FakeSettings::make("top", true, root_);
  const jlong context = nativeCreateTransactionContext(env_, nullptr);
  nativeSet(env_, nullptr, context, handle_, nullptr, str("top"), five_, nullptr);
  nativeSet(env_, nullptr, context, handle_, nullptr, str("none"), five_, nullptr);
  EXPECT_EQ(nativeCommitTransaction(env_, nullptr, context, user_), nullptr);
  EXPECT_EQ(takeException(env_), "java.lang.RuntimeException: cannot open settings root");

  fakeHost().root = root_;
  calls();
  EXPECT_EQ(nativeCommitTransaction(env_, nullptr, context, user_), nullptr);
  EXPECT_EQ(fakeHost().calls.back(), "setMultiple top=5 \"user\"");
  EXPECT_EQ(calls().front(), "getSettingsRoot 0");
  EXPECT_EQ(nativeValidateTransaction(env_, nullptr, context, user_), nullptr);
  EXPECT_EQ(calls().back(), "validateMultiple top=5 ");

  fakeHost().problems = {{"p1", "r1"}, {"p2", "unspeakable"}, {"p3", "r3"}};
  const std::string shownList = "[p1 because r1, p3 because r3]";
  EXPECT_EQ(shownList, show(nativeValidateTransaction(env_, nullptr, context, user_)));
  {
    const PatchedJava java(env_);
    EXPECT_EQ(shownList, show(nativeCommitTransaction(env_, nullptr, context, user_)));
    EXPECT_EQ((Names{"r1", "p1", "unspeakable", "p2", "r3", "p3"}), java.calls().strings);
  }
  nativeDeleteTransactionContext(env_, nullptr, context);
}

}  // namespace
