#include "host/tree/level_order.h"

#include <array>
#include <boost/make_shared.hpp>

#include "service/failures.h"
#include "service/levels.h"

namespace zlutil::settings::host {
namespace {

constexpr std::array<std::string_view, kLevelCount> kNames{"session", "user", "workgroup",
                                                           "factory"};

}  // namespace

std::string levelName(int level) { return std::string(kNames[level]); }

std::optional<int> findLevel(std::string_view name) {
  for (int level = 0; level < kLevelCount; ++level) {
    if (kNames[level] == name) return level;
  }
  return std::nullopt;
}

int requireLevel(const std::string& name) {
  const std::optional<int> level = findLevel(name);
  if (!level) throw Failure<KORVEN::settings::core::UnSupportedLevel>(name);
  return *level;
}

}  // namespace zlutil::settings::host

namespace zlutil::settings {

boost::shared_ptr<SettingsLevelManager> SettingsLevelManager::getSettingsLevelManagerInstance() {
  static const auto& instance =
      *new boost::shared_ptr<SettingsLevelManager>(boost::make_shared<SettingsLevelManager>());
  return instance;
}

std::vector<std::string> SettingsLevelManager::getAllLevelNames() const {
  return std::vector<std::string>(host::kNames.begin(), host::kNames.end());
}

}  // namespace zlutil::settings
