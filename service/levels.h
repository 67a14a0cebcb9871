// The levels at which a setting can have a value, in priority order: the effective value is that of
// the first level that has one. The list never changes while a process runs; it may be read from
// any thread.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "base/export.h"

namespace zlutil {
namespace settings {

class SETTINGS_HOST_API SettingsLevelManager {
 public:
  static boost::shared_ptr<SettingsLevelManager> getSettingsLevelManagerInstance();

  // Returns all level names, highest priority first.
  std::vector<std::string> getAllLevelNames() const;
};

}  // namespace settings
}  // namespace zlutil
