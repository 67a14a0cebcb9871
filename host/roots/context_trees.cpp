#include "host/roots/context_trees.h"

#include <boost/make_shared.hpp>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>

#include "base/mutex.h"
#include "base/never_destroyed.h"
#include "host/files/xml_directory_store.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/roots/fill_from_stores.h"
#include "host/tree/memory_store.h"
#include "host/user_store/user_store.h"
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
};

ContextTrees& contextTrees() {
  static base::NeverDestroyed<ContextTrees> instance;
  return instance.get();
}

contextmgr::ZcrID actualContext(contextmgr::ZcrID context) {
  return context == contextmgr::AnyZcrID ? contextmgr::BlessedZcrID : context;
}

// Returns the value of SETTINGS_LOCK_WAIT, or nothing if it is not a number of milliseconds.
std::optional<int> lockWaitFromEnvironment() {
  const char* const text = std::getenv("SETTINGS_LOCK_WAIT");
  if (!text || !*text) return std::nullopt;
  int milliseconds = -1;
  const char* const end = text + std::strlen(text);
  const auto [stop, error] = std::from_chars(text, end, milliseconds);
  if (error == std::errc() && stop == end && milliseconds >= 0) return milliseconds;
  logError("SETTINGS_LOCK_WAIT is \"" + shownFileName(text) +
           "\", expected a number of milliseconds. The default is used.");
  return std::nullopt;
}

// Keeps the user level in memory if there is no directory.
std::shared_ptr<Store> userStore(contextmgr::ZcrID context, const Directories& directories) {
  if (directories.user.empty()) return std::make_shared<MemoryStore>();
  UserStoreOptions options{directories.user, context.value()};
  if (const std::optional<int> wait = lockWaitFromEnvironment()) options.lockWait = *wait;
  return std::make_shared<UserStore>(options);
}

}  // namespace

NodePtr makeContextTree(contextmgr::ZcrID context, const Directories& directories) {
  Tree::Stores stores;
  stores[kSession] = std::make_shared<MemoryStore>();
  stores[kUser] = userStore(context, directories);
  stores[kWorkgroup] = std::make_shared<XmlDirectoryStore>(directories.workgroup, true);
  stores[kFactory] =
      std::make_shared<XmlDirectoryStore>(directories.factory, directories.isFactoryRequired);
  const TreePtr tree(new Tree(context, stores));
  auto root = boost::make_shared<Node>(tree, kContextRootName, true, ValidatorPtr());
  fillFromStores(root);
  return root;
}

}  // namespace host

boost::shared_ptr<Settings> Settings::getSettingsRoot(const contextmgr::ZcrID& context) {
  try {
    host::ContextTrees& all = host::contextTrees();
    base::MutexLock lock(all.mutex);
    const contextmgr::ZcrID actual = host::actualContext(context);
    const auto found = all.trees.find(actual);
    if (found != all.trees.end()) return found->second.root;
    const host::Directories directories = host::currentDirectories();
    const host::NodePtr root = host::makeContextTree(actual, directories);
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
