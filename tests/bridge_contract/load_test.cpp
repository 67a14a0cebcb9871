// Loading into, and unloading from, a JVM whose answers a test chooses.
#include "nativesettings/java_validator.h"
#include "tests/bridge_contract/contract_test.h"
#include "tests/support/patched_java.h"
#include "values/java/class_records.h"

extern "C" jint JNICALL JNI_OnLoad(JavaVM*, void*);
extern "C" void JNICALL JNI_OnUnload(JavaVM*, void*);

namespace {

using namespace nativesettings;
using namespace test;

#define CLASS(NAME) "com/velonix/services/settings/" NAME

jint answer = JNI_OK;
JNIEnv* environment = nullptr;
jint askedVersion = 0;

jint JNICALL getEnv(JavaVM*, void** env, jint version) {
  askedVersion = version;
  *env = environment;
  return answer;
}

class Load : public ContractTest {
 protected:
  void SetUp() override {
    ContractTest::SetUp();
    functions_.GetEnv = &getEnv;
    vm_.functions = &functions_;
  }
  void TearDown() override {
    EXPECT_EQ(JNI_VERSION_1_4, JNI_OnLoad(jvm(), nullptr));
    ContractTest::TearDown();
  }
  jint load(jint getEnvAnswers, JNIEnv* env) {
    answer = getEnvAnswers;
    environment = env;
    return JNI_OnLoad(&vm_, nullptr);
  }

 private:
  JNIInvokeInterface_ functions_{};
  JavaVM vm_{};
};

TEST_F(Load, AClassThatIsMissingDoesNotStopTheOthers) {
  const PatchedJava java(env_, {CLASS("SettingPath")});
  EXPECT_EQ(JNI_VERSION_1_4, load(JNI_OK, env_));
  EXPECT_EQ(JNI_VERSION_1_4, askedVersion);
  // The last class is no part of the contract, so it may be missing.
  EXPECT_EQ((Names{CLASS("Setting") " 9", "no " CLASS("SettingPath"),
                   CLASS("SettingLevel$Helper") " 6", CLASS("SettingTransaction") " 4",
                   CLASS("SettingTestEnvironment") " 2", "no " CLASS("NativeLane")}),
            java.calls().classes);
  EXPECT_FALSE(env_->ExceptionCheck());
  EXPECT_EQ(Names{"setJValProxy"}, calls());
}

TEST_F(Load, AnOldJvmSkipsTheRegistrationOnly) {
  const PatchedJava java(env_);
  EXPECT_EQ(JNI_VERSION_1_4, load(JNI_EVERSION, env_));
  EXPECT_EQ(Names(), java.calls().classes);
  EXPECT_EQ(Names{"setJValProxy"}, calls());
}

TEST_F(Load, TheRegistrationNeedsAnEnvironmentOnly) {
  const PatchedJava java(env_);
  EXPECT_EQ(JNI_VERSION_1_4, load(JNI_EDETACHED, nullptr));
  EXPECT_EQ(Names{"setJValProxy"}, calls());
  EXPECT_EQ(Names(), java.calls().classes);
  load(JNI_EDETACHED, env_);
  EXPECT_NE(Names(), java.calls().classes);
}

TEST_F(Load, UnloadingForgetsResolvedClassesAndLoadingFindsThemAgain) {
  javaValidator("accept", "x", m_, "k", 1);
  EXPECT_NE(settingValidator_validateID.load(), nullptr);
  EXPECT_NE(intClassInfo.getArrayClass(env_), nullptr);
  fakeHost().calls.clear();
  JNI_OnUnload(jvm(), nullptr);
  EXPECT_EQ(Names{"clearFunctions"}, calls());
  EXPECT_TRUE(globalConsInfos.empty());
  EXPECT_EQ(settingValidator_validateID.load(), nullptr);
  EXPECT_EQ(settingInfo_getValueID.load(), nullptr);
  EXPECT_EQ(settingInfo_getTypeID.load(), nullptr);
  EXPECT_EQ(intClassInfo.getArrayClass(env_), nullptr) << "until the library is loaded again";
  EXPECT_EQ(JNI_VERSION_1_4, JNI_OnLoad(jvm(), nullptr));
  EXPECT_NE(intClassInfo.getArrayClass(env_), nullptr);
  EXPECT_THROW(javaValidator("refuse", "x", m_, "k", 1), std::exception);
  EXPECT_NE(settingValidator_validateID.load(), nullptr);
}

}  // namespace
