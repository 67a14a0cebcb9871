#include "host/roots/context_trees.h"

#include <map>

#include "base/mutex.h"
#include "base/never_destroyed.h"
#include "host/files/xml_directory_store.h"
#include "host/os/environment.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/roots/fill_from_stores.h"
#include "host/roots/user_level.h"
#include "host/roots/workgroup_level.h"
#include "host/tree/memory_store.h"
#include "service/testing.h"
#include "service/z_settings.h"

namespace zlutil::settings {
namespace host {
namespace {

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

NodePtr makeMemoryTree(contextmgr::ZcrID context) {
  const auto memory = std::make_shared<MemoryStore>();
  return makeTree(context, {memory, memory, memory, memory});
}

}  // namespace

NodePtr makeContextTree(contextmgr::ZcrID context, const Directories& directories) {
  Tree::Stores stores;
  stores[kSession] = std::make_shared<MemoryStore>();
  stores[kUser] = makeUserStore(context, directories.user);
  stores[kWorkgroup] = makeWorkgroupStore(environmentText("SETTINGS_WORKGROUP"), directories);
  stores[kFactory] =
      std::make_shared<XmlDirectoryStore>(directories.factory, directories.isFactoryRequired);
  return makeTree(context, stores);
}

bool areKeptInMemory() {
  ContextTrees& all = contextTrees();
  base::MutexLock lock(all.mutex);
  return all.inMemory;
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
