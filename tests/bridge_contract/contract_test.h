// A test of the natives on the fake host and on a Java half with only the classes that the natives
// name (java/):
//
//   (root)
//     n.x         node, found under that one name
//       k         key
//       d.1       key
//       m         node
//         inner   node
#pragma once

#include "tests/bridge_contract/fake_host.h"
#include "tests/support/jvm.h"

namespace test {

#define SETTINGS_PACKAGE "com.velonix.services.settings."

using Names = std::vector<std::string>;

class ContractTest : public JvmTest {
 protected:
  void SetUp() override {
    JvmTest::SetUp();
    fakeHost() = FakeHost();
    root_ = FakeSettings::make("root", false, nullptr);
    node_ = FakeSettings::make("n.x", false, root_);
    k_ = FakeSettings::make("k", true, node_);
    dotted_ = FakeSettings::make("d.1", true, node_);
    m_ = FakeSettings::make("m", false, node_);
    inner_ = FakeSettings::make("inner", false, m_);
    pointer_ = root_;
    handle_ = reinterpret_cast<jlong>(&pointer_);
    nodePath_ = path({"n.x"});
    key_ = str("k");
    user_ = str("user");
    five_ = info(make("java/lang/Integer", "(I)V", 5));
  }

  jobject info(jobject value) {
    return make("com/velonix/services/settings/SettingInfo", "(Ljava/lang/Object;)V", value);
  }
  // Returns the calls since the last time.
  Names calls() {
    Names taken;
    taken.swap(fakeHost().calls);
    return taken;
  }
  void failAt(const std::string& operation, const std::function<void()>& failure) {
    fakeHost().failsAt = operation;
    fakeHost().failure = failure;
  }

  boost::shared_ptr<FakeSettings> root_, node_, k_, dotted_, m_, inner_;
  SettingsPtr pointer_;
  jlong handle_ = 0;
  jobjectArray nodePath_ = nullptr;
  jstring key_ = nullptr, user_ = nullptr;
  jobject five_ = nullptr;
};

}  // namespace test
