// A test of the bridge on a small standalone tree, with a handle to its root:
//
//   (root)
//     a           node
//       b         node
//         k       int key: session unset, user 7, factory 1
//         empty   key without value or type
//       s         string key: user "text"
//     spare       node without children
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "service/settings.h"
#include "tests/support/jvm.h"

namespace testing_support {

using SettingsPtr = boost::shared_ptr<zlutil::settings::Settings>;

class BridgeTest : public JvmTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  SettingsPtr at(const std::vector<std::string>& names) { return root_->findDescendant(names); }
  SettingsPtr addNode(const SettingsPtr& parent, const std::string& name);
  SettingsPtr addKey(const SettingsPtr& parent, const std::string& name);

  // A SettingInfo that carries the value, or only a class.
  jobject info(jobject value);
  jobject infoOfClass(jclass cls);
  jobject integer(int value);

  // The value that a SettingInfo carries, and its type.
  jobject valueOf(jobject settingInfo);
  jobject typeOf(jobject settingInfo);

  SettingsPtr root_;
  jlong handle_ = 0;
};

}  // namespace testing_support
