// A test of the bridge on a small standalone tree, with a handle to its root:
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "service/settings.h"
#include "tests/support/jvm.h"

namespace test {

using SettingsPtr = boost::shared_ptr<zlutil::settings::Settings>;

class BridgeTest : public JvmTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  SettingsPtr entryAt(const std::vector<std::string>& names) {
    return root_->findDescendant(names);
  }
  SettingsPtr addNode(const SettingsPtr& parent, const std::string& name);
  SettingsPtr addKey(const SettingsPtr& parent, const std::string& name);

  // Returns a new SettingInfo that carries the value, or only a class.
  jobject info(jobject value);
  jobject infoOfClass(jclass cls);
  jobject integer(int value);

  // Returns the value that a SettingInfo carries, or its type.
  jobject valueOf(jobject settingInfo);
  jobject typeOf(jobject settingInfo);

  SettingsPtr root_;
  jlong handle_ = 0;
};

}  // namespace test
