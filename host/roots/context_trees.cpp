#include "host/roots/context_trees.h"

#include <boost/make_shared.hpp>
#include <map>

#include "base/mutex.h"
#include "base/never_destroyed.h"
#include "host/files/xml_directory_store.h"
#include "host/os/environment.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/roots/fill_from_stores.h"
#include "host/roots/workgroup_level.h"
#include "host/tree/memory_store.h"
#include "host/user_store/user_store.h"
#include "service/testing.h"
#include "service/z_settings.h"

namespace zlutil::settings {
namespace host {
namespace {

constexpr char kContextRootName[] = "settings";

struct ContextTree {
  NodePtr root;
  std::string factoryDirectory;
};

struct ContextTrees {
  base::Mutex mutex;
  std::map<contextmgr::ZcrID, ContextTree> trees GUARDED_BY(mutex);
  bool inMemory GUARDED_BY(mutex) = false;
};

ContextTrees& contextTrees() {
  static base::NeverDestroyed<ContextTrees> instance;
  return instance.get();
}

contextmgr::ZcrID actualContext(contextmgr::ZcrID context) {
  return context == contextmgr::AnyZcrID ? contextmgr::BlessedZcrID : context;
}

// Keeps the user level in memory if there is no directory.
std::shared_ptr<Store> userStore(contextmgr::ZcrID context, const Directories& directories) {
  if (directories.user.empty()) return std::make_shared<MemoryStore>();
  UserStoreOptions options{directories.user, context.value()};
  const auto read = [](const char* variable, const char* units, int& option) {
    if (const std::optional<int> number = environmentNumber(variable, units)) option = *number;
  };
  read("SETTINGS_LOCK_WAIT", "milliseconds", options.lockWait);
  read("SETTINGS_HISTORY_COMMITS", "commits", options.history.commits);
  read("SETTINGS_HISTORY_DAYS", "days", options.history.days);
  return std::make_shared<UserStore>(options);
}

NodePtr makeTree(contextmgr::ZcrID context, const Tree::Stores& stores) {
  const TreePtr tree(new Tree(context, stores));
  auto root = boost::make_shared<Node>(tree, kContextRootName, true, ValidatorPtr());
  fillFromStores(root);
  return root;
}

NodePtr makeMemoryTree(contextmgr::ZcrID context) {
  const auto memory = std::make_shared<MemoryStore>();
  return makeTree(context, {memory, memory, memory, memory});
}

}  // namespace

NodePtr makeContextTree(contextmgr::ZcrID context, const Directories& directories) {
  Tree::Stores stores;
  stores[kSession] = std::make_shared<MemoryStore>();
  stores[kUser] = userStore(context, directories);
  stores[kWorkgroup] = makeWorkgroupStore(directories);
  stores[kFactory] =
      std::make_shared<XmlDirectoryStore>(directories.factory, directories.isFactoryRequired);
  return makeTree(context, stores);
}

}  // namespace host

bool keepSettingsInMemory() {
  host::ContextTrees& all = host::contextTrees();
  base::MutexLock lock(all.mutex);
  if (all.trees.empty()) all.inMemory = true;
  return all.inMemory;
}

boost::shared_ptr<Settings> Settings::getSettingsRoot(const contextmgr::ZcrID& context) {
  try {
    host::ContextTrees& all = host::contextTrees();
    base::MutexLock lock(all.mutex);
    const contextmgr::ZcrID actual = host::actualContext(context);
    const auto found = all.trees.find(actual);
    if (found != all.trees.end()) return found->second.root;
    const host::Directories directories = host::currentDirectories();
    const host::NodePtr root =
        all.inMemory ? host::makeMemoryTree(actual) : host::makeContextTree(actual, directories);
    boost::unique_lock<boost::shared_mutex> rootLock(getTheRootMutex());
    all.trees.emplace(actual, host::ContextTree{root, directories.factory});
    return root;
  } catch (const std::exception& failure) {
    host::logError(std::string("cannot make the settings tree: ") + failure.what());
    return {};
  }
}

boost::shared_mutex& Settings::getTheRootMutex() {
  static base::NeverDestroyed<boost::shared_mutex> mutex;
  return mutex.get();
}

std::string ZSettings::getFactoryDir(const contextmgr::ZcrID& context) {
  host::ContextTrees& all = host::contextTrees();
  base::MutexLock lock(all.mutex);
  const auto found = all.trees.find(host::actualContext(context));
  return host::shownFileName(found != all.trees.end() ? found->second.factoryDirectory
                                                      : host::currentDirectories().factory);
}

}  // namespace zlutil::settings
