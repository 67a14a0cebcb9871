// The trees of applications that name their sources (service/application.h).
#include <algorithm>
#include <filesystem>
#include <map>

#include "base/mutex.h"
#include "base/never_destroyed.h"
#include "host/change/given_text.h"
#include "host/files/given_files_store.h"
#include "host/files/xml_directory_store.h"
#include "host/os/environment.h"
#include "host/os/file_name.h"
#include "host/roots/context_trees.h"
#include "host/roots/fill_from_stores.h"
#include "host/roots/user_level.h"
#include "host/roots/workgroup_level.h"
#include "host/tree/memory_store.h"
#include "service/application.h"
#include "service/failures.h"

namespace zlutil::settings {
namespace host {
namespace {

using namespace KORVEN::settings::core;

constexpr std::size_t kMaxNameLength = 63;

[[noreturn]] void refuse(const std::string& source, const std::string& reason) {
  throw Failure<FileLoadingError>(source, reason);
}

void checkApplicationName(const std::string& name) {
  const auto isPlain = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  };
  const auto isAllowed = [&](char c) { return isPlain(c) || c == '_' || c == '-' || c == '.'; };
  if (name.empty() || (name.size() <= kMaxNameLength && isPlain(name.front()) &&
                       std::all_of(name.begin(), name.end(), isAllowed))) {
    return;
  }
  throw Failure<ValidationFailure>("\"" + narrowText(name, "a name") +
                                   "\" is not the name of an application. Use at most " +
                                   std::to_string(kMaxNameLength) +
                                   " ASCII letters, digits, \"_\", \"-\" and \".\", first a "
                                   "letter or a digit.");
}

// Returns a file name as bytes for the system; "" for none.
std::string bytesOf(const base::ustring& path) {
  if (path.empty()) return {};
  const std::optional<std::string> name = fileNameFrom(path);
  if (!name) refuse(base::narrowFromUstring(path), "no file can have this name");
  return *name;
}

void requireDirectory(const std::string& directory) {
  std::error_code error;
  if (std::filesystem::is_directory(directory, error)) return;
  refuse(shownFileName(directory), error ? error.message() : "it is no directory");
}

// All that decides what an application's tree has.
struct ResolvedSources {
  Directories directories;
  std::string cluster;
  std::vector<GivenFilesStore::File> files;

  explicit ResolvedSources(const ApplicationSources& given)
      : directories(areKeptInMemory() ? Directories() : currentDirectories()) {
    checkApplicationName(given.name);
    const std::string below = given.name.empty() ? "" : '/' + given.name;
    if (!given.userDirectory.empty()) {
      directories.user = bytesOf(given.userDirectory);
    } else if (!directories.user.empty()) {
      directories.user += below;
    }
    resolveWorkgroup(given, below);
    resolveFactory(given, below);
  }

  // Equal for equal sources.
  std::string identity() const {
    std::string identity;
    const auto add = [&](const std::string& part) {
      identity += std::to_string(part.size()) + ':' + part;
    };
    for (const std::string* part :
         {&directories.user, &directories.workgroup, &directories.factory, &cluster}) {
      add(*part);
    }
    for (const GivenFilesStore::File& file : files) {
      add(file.path), add(file.name), add(file.content);
    }
    return identity;
  }

 private:
  void resolveWorkgroup(const ApplicationSources& given, const std::string& below) {
    if (!given.workgroupCluster.empty() && !given.workgroupDirectory.empty()) {
      refuse(given.workgroupCluster, "the workgroup level has a directory too");
    }
    if (!given.workgroupCluster.empty()) {
      cluster = given.workgroupCluster;
    } else if (!given.workgroupDirectory.empty()) {
      directories.workgroup = bytesOf(given.workgroupDirectory);
      requireDirectory(directories.workgroup);
    } else {
      if (!areKeptInMemory()) cluster = environmentText("SETTINGS_WORKGROUP");
      if (!cluster.empty()) cluster += below;
      if (!directories.workgroup.empty()) directories.workgroup += below;
      directories.isWorkgroupRequired = below.empty();
    }
  }

  void resolveFactory(const ApplicationSources& given, const std::string& below) {
    if (!given.factoryDirectory.empty()) {
      directories.factory = bytesOf(given.factoryDirectory);
      if (!given.factoryFiles.empty()) {
        refuse(shownFileName(directories.factory), "the factory level has single files too");
      }
      directories.isFactoryRequired = true;
      requireDirectory(directories.factory);
    } else if (!below.empty()) {
      directories.factory =
          directories.isFactoryRequired ? directories.factory + below : std::string();
      directories.isFactoryRequired = false;
    }
    for (const ApplicationSources::File& file : given.factoryFiles) {
      files.push_back({bytesOf(file.path), narrowText(file.name, "a file's name"), file.content});
    }
  }
};

NodePtr makeApplicationTree(const ResolvedSources& sources) {
  Tree::Stores stores;
  stores[kSession] = std::make_shared<MemoryStore>();
  stores[kUser] = makeUserStore(contextmgr::BlessedZcrID, sources.directories.user);
  stores[kWorkgroup] = makeWorkgroupStore(sources.cluster, sources.directories);
  if (sources.files.empty()) {
    stores[kFactory] = std::make_shared<XmlDirectoryStore>(sources.directories.factory,
                                                           sources.directories.isFactoryRequired);
  } else {
    stores[kFactory] = std::make_shared<GivenFilesStore>(sources.files);
  }
  return makeTree(contextmgr::BlessedZcrID, stores);
}

struct ApplicationTrees {
  base::Mutex mutex;
  std::map<std::string, boost::weak_ptr<Node>> trees GUARDED_BY(mutex);
};

ApplicationTrees& applicationTrees() {
  static base::NeverDestroyed<ApplicationTrees> instance;
  return instance.get();
}

}  // namespace
}  // namespace host

boost::shared_ptr<Settings> openApplication(const ApplicationSources& given) {
  const host::ResolvedSources sources(given);
  host::ApplicationTrees& all = host::applicationTrees();
  const base::MutexLock lock(all.mutex);
  for (auto tree = all.trees.begin(); tree != all.trees.end();) {
    tree = tree->second.expired() ? all.trees.erase(tree) : std::next(tree);
  }
  boost::weak_ptr<host::Node>& known = all.trees[sources.identity()];
  host::NodePtr root = known.lock();
  if (!root) known = root = host::makeApplicationTree(sources);
  return root;
}

}  // namespace zlutil::settings
