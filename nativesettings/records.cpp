#include "nativesettings/records.h"

#include "base/never_destroyed.h"
#include "service/levels.h"

namespace nativesettings {
namespace {

base::NeverDestroyed<std::string> rootName("__STANDALONE_ROOT__");

}  // namespace

jzi::ConsInfo settingAccessException("com/velonix/services/settings/SettingAccessException", "");
jzi::ConsInfo settingNotFoundException("com/velonix/services/settings/SettingNotFoundException",
                                       "");
jzi::ConsInfo runtimeException("java/lang/RuntimeException", "");
jzi::ConsInfo fileNotFoundException("java/io/FileNotFoundException", "");
jzi::ConsInfo settingValidationException("com/velonix/services/settings/SettingValidationException",
                                         "");
jzi::ConsInfo settingNameDuplicationException(
    "com/velonix/services/settings/SettingNameDuplicationException", "");
jzi::ConsInfo settingUnsupportedTypeRuntimeException(
    "com/velonix/services/settings/SettingUnsupportedTypeRuntimeException", "");
jzi::ConsInfo settingLevelRuntimeException(
    "com/velonix/services/settings/SettingLevelRuntimeException", "");
jzi::ConsInfo illegalStateException("java/lang/IllegalStateException", "");
jzi::ConsInfo unsupportedOperationException("java/lang/UnsupportedOperationException", "");

namespace {

base::NeverDestroyed<std::vector<std::string>> levelNames(
    zlutil::settings::SettingsLevelManager::getSettingsLevelManagerInstance()->getAllLevelNames());

}  // namespace

const std::string& standaloneRootName() { return rootName.get(); }
const std::vector<std::string>& allLevelNames() { return levelNames.get(); }

}  // namespace nativesettings
