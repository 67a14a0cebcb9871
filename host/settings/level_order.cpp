#include "host/settings/level_order.h"

#include <array>
#include <boost/make_shared.hpp>

#include "service/failures.h"
#include "service/levels.h"

namespace zlutil::settings::host {
namespace {

const std::array<std::string, kLevelCount>& names() {
  static const auto& list =
      *new std::array<std::string, kLevelCount>{"session", "user", "workgroup", "factory"};
  return list;
}

}  // namespace

const std::string& levelName(int level) { return names()[level]; }

std::optional<int> findLevel(std::string_view name) {
  for (int level = 0; level < kLevelCount; ++level) {
    if (names()[level] == name) return level;
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
  return {host::names().begin(), host::names().end()};
}

}  // namespace zlutil::settings
