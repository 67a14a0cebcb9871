// After the end of the Java layer a native that works on a tree does nothing and raises nothing.
#include "bridge/java_layer.h"
#include "bridge/shared_object.h"
#include "nativesettings/changing.h"
#include "nativesettings/handles.h"
#include "nativesettings/java_validator.h"
#include "nativesettings/levels.h"
#include "nativesettings/listener_registry.h"
#include "nativesettings/listeners.h"
#include "nativesettings/reading.h"
#include "nativesettings/transactions.h"
#include "service/failures.h"
#include "tests/bridge_contract/contract_test.h"

namespace {

using namespace nativesettings;
using namespace test;
using NotReady =
    zlutil::settings::Failure<KORVEN::settings::core::JVMNotReadyForProcessingJavaFunction>;

TEST_F(ContractTest, AfterTheEndOfJavaTheNativesDoNothing) {
  jobject listener = make("com/velonix/services/settings/RecordingListener", "()V");
  fakeHost().root = root_;
  fakeHost().value = 5;
  fakeHost().setLevel = "user";
  fakeHost().problems = {{"p", "r"}};
  ASSERT_TRUE(jzi::stopJava(std::chrono::milliseconds(0)));

  EXPECT_EQ(nativeGet(env_, nullptr, handle_, nodePath_, key_, user_), nullptr);
  EXPECT_EQ(nativeGetLevel(env_, nullptr, handle_, nodePath_, key_), nullptr);
  EXPECT_FALSE(nativeIsSet(env_, nullptr, handle_, nodePath_, key_, user_));
  EXPECT_FALSE(nativeExists(env_, nullptr, handle_, nodePath_, key_));
  EXPECT_FALSE(nativeIsChildNode(env_, nullptr, handle_, nodePath_, str("m")));
  EXPECT_EQ(nativeGetChildren(env_, nullptr, handle_, nodePath_, 0), nullptr);
  EXPECT_EQ(nativeGetZvmRoot(env_, nullptr, 0), 0);
  EXPECT_EQ(nativeLoadSettings(env_, nullptr, str("f.xml")), 0);
  EXPECT_EQ(nativeGetFactoryDir(env_, nullptr, handle_), nullptr);
  nativeSet(env_, nullptr, 0, handle_, nodePath_, key_, five_, user_);
  nativeUnset(env_, nullptr, handle_, nodePath_, key_, user_);
  nativeAddKey(env_, nullptr, handle_, nodePath_, str("new"), five_, user_, nullptr, nullptr);
  nativeAddNode(env_, nullptr, handle_, nodePath_, str("new"), nullptr, nullptr);
  nativeDelete(env_, nullptr, handle_, nodePath_, key_);
  nativeCopySubtree(env_, nullptr, handle_, nullptr, handle_, nodePath_, str("new"));
  nativeAddRemoveListener(env_, nullptr, key_, handle_, nodePath_, key_, listener);
  const jlong context = nativeCreateTransactionContext(env_, nullptr);
  EXPECT_NE(context, 0);
  EXPECT_EQ(nativeCommitTransaction(env_, nullptr, context, user_), nullptr);
  EXPECT_EQ(nativeValidateTransaction(env_, nullptr, context, user_), nullptr);
  EXPECT_EQ(Names(), calls()) << "the service is not asked";
  EXPECT_FALSE(env_->ExceptionCheck());
  EXPECT_EQ(valueChangeListeners.size(), 0u);
  nativeDeleteTransactionContext(env_, nullptr, context);

  EXPECT_THROW(javaValidator("accept", "", node_, "k", 1), NotReady);
  EXPECT_FALSE(
      jzi::detail::makeSharedObject(env_, key_, &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef));
}

TEST_F(ContractTest, NativesThatTouchNoTreeGoOnWorking) {
  ASSERT_TRUE(jzi::stopJava(std::chrono::milliseconds(0)));
  EXPECT_TRUE(nativeIsKeyNameValid(env_, nullptr, str("a")));
  EXPECT_EQ(text(nativeGetDefaultLevel(env_, nullptr)), "user");
  EXPECT_EQ(nativeCompareLevels(env_, nullptr, str("session"), user_), 1);
  EXPECT_EQ(text(nativeSetEnv(env_, nullptr, str("/f"), str("/u"))), "/f");
  EXPECT_EQ(reinterpret_cast<jlong>(root_.get()), nativeGetPtrTarget(env_, nullptr, handle_));
  const long owners = root_.use_count();
  const auto other = reinterpret_cast<jlong>(new SettingsPtr(root_));
  nativeReleasePtr(env_, nullptr, other);
  EXPECT_EQ(owners, root_.use_count());
  nativeDeleteTransactionContext(env_, nullptr, nativeCreateTransactionContext(env_, nullptr));
}

}  // namespace
