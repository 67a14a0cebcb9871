#include "host/roots/user_level.h"

#include "host/os/environment.h"
#include "host/tree/memory_store.h"
#include "host/user_store/user_store.h"

namespace zlutil::settings::host {

std::shared_ptr<Store> makeUserStore(contextmgr::ZcrID context, const std::string& directory) {
  if (directory.empty()) return std::make_shared<MemoryStore>();
  UserStoreOptions options{directory, context.value()};
  const auto read = [](const char* variable, const char* units, int& option) {
    if (const std::optional<int> number = environmentNumber(variable, units)) option = *number;
  };
  read("SETTINGS_LOCK_WAIT", "milliseconds", options.lockWait);
  read("SETTINGS_HISTORY_COMMITS", "commits", options.history.commits);
  read("SETTINGS_HISTORY_DAYS", "days", options.history.days);
  return std::make_shared<UserStore>(options);
}

}  // namespace zlutil::settings::host
