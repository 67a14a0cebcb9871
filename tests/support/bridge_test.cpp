#include "tests/support/bridge_test.h"

#include "nativesettings/handles.h"
#include "service/z_settings.h"

namespace test {

using zlutil::settings::ValidatorChoice;
using zlutil::settings::ZSettings;

void BridgeTest::SetUp() {
  JvmTest::SetUp();
  handle_ = nativesettings::nativeLoadSettings(env_, nullptr, nullptr);
  ASSERT_NE(handle_, 0);
  root_ = nativesettings::getRootFromJava(handle_);
  const SettingsPtr a = addNode(root_, "a");
  const SettingsPtr b = addNode(a, "b");
  addKey(b, "k");
  b->setAny("k", 1, "factory");
  b->setAny("k", 7, "user");
  addKey(b, "empty");
  addKey(a, "s");
  a->setAny("s", std::string("text"), "user");
  addNode(root_, "spare");
}

void BridgeTest::TearDown() {
  root_.reset();
  nativesettings::nativeReleasePtr(env_, nullptr, handle_);
  JvmTest::TearDown();
}

SettingsPtr BridgeTest::addNode(const SettingsPtr& parent, const std::string& name) {
  SettingsPtr node = ZSettings::createSettingsNode(name, false, true, ValidatorChoice());
  node->attachTo(parent);
  return node;
}

SettingsPtr BridgeTest::addKey(const SettingsPtr& parent, const std::string& name) {
  SettingsPtr key = ZSettings::createSettingsNode(name, true, true, ValidatorChoice());
  key->attachTo(parent);
  return key;
}

jobject BridgeTest::info(jobject value) {
  return make("com/velonix/services/settings/SettingInfo", "(Ljava/lang/Object;)V", value);
}

jobject BridgeTest::infoOfClass(jclass cls) {
  return make("com/velonix/services/settings/SettingInfo", "(Ljava/lang/Class;)V", cls);
}

jobject BridgeTest::integer(int value) { return make("java/lang/Integer", "(I)V", value); }

jobject BridgeTest::valueOf(jobject settingInfo) {
  return call(settingInfo, "getValue", "()Ljava/lang/Object;");
}

jobject BridgeTest::typeOf(jobject settingInfo) {
  return call(settingInfo, "getType", "()Ljava/lang/Class;");
}

}  // namespace test
