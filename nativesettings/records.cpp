#include "nativesettings/records.h"

#include "base/never_destroyed.h"
#include "bridge/java_layer.h"
#include "service/levels.h"

namespace nativesettings {
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

// If the library is unloaded from a JVM that goes on, no thread can use the list any more.
struct FreeLevelNamesAtUnload {
  ~FreeLevelNamesAtUnload() {
    if (jzi::JVMShutdownGuard().JVMRunning()) std::vector<std::string>().swap(levelNames.get());
  }
} freeLevelNamesAtUnload;

}  // namespace

const std::vector<std::string>& allLevelNames() { return levelNames.get(); }

}  // namespace nativesettings
