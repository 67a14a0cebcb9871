#include "host/roots/workgroup_level.h"

#include <dlfcn.h>

#include <filesystem>

#include "host/change/external_changes.h"
#include "host/files/xml_directory_store.h"
#include "host/os/environment.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "host/tree/store_library.h"
#include "host/tree/unavailable_store.h"

namespace zlutil::settings::host {
namespace {

// Returns the file beside this library.
std::string besideThisLibrary(const char* file) {
  Dl_info library;
  if (dladdr(reinterpret_cast<void*>(&makeWorkgroupStore), &library) == 0) return file;
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(library.dli_fname, error);
  return (path.parent_path() / file).string();
}

// Returns the function that makes the store. Throws std::runtime_error. The library is never
// unloaded, because it has threads.
MakeSharedStore& requireStoreLibrary() {
  void* const library = dlopen(besideThisLibrary(kStoreLibrary).c_str(), RTLD_NOW | RTLD_NODELETE);
  void* const function = library ? dlsym(library, kMakeSharedStore) : nullptr;
  if (!function) throw std::runtime_error(dlerror());
  return *reinterpret_cast<MakeSharedStore*>(function);
}

std::shared_ptr<Store> makeClusterStore(const std::string& address,
                                        const Directories& directories) {
  SharedStoreOptions options;
  options.address = address;
  options.credentials = environmentText("SETTINGS_WORKGROUP_CREDENTIALS");
  options.authority = environmentText("SETTINGS_WORKGROUP_CA");
  options.certificate = environmentText("SETTINGS_WORKGROUP_CERTIFICATE");
  options.key = environmentText("SETTINGS_WORKGROUP_KEY");
  options.directory = directories.user;
  if (const auto wait = environmentNumber("SETTINGS_WORKGROUP_WAIT", "milliseconds")) {
    options.longestStart = std::chrono::milliseconds(*wait);
  }
  options.fill = [](Node& root, int level, const ExternalChanges& changes) {
    applyExternalChanges(root, level, changes);
  };
  try {
    return std::shared_ptr<Store>(requireStoreLibrary()(options));
  } catch (const std::exception& failure) {
    // An address with a user may have a password too, which is not shown.
    const std::string shown = address.find('@') == std::string::npos
                                  ? "is \"" + shownFileName(address) + "\", which cannot be used: "
                                  : "cannot be used: ";
    const std::string reason = "SETTINGS_WORKGROUP " + shown + shownFileName(failure.what());
    logError(reason + ". The workgroup level is empty.");
    return std::make_shared<UnavailableStore>(reason);
  }
}

}  // namespace

std::shared_ptr<Store> makeWorkgroupStore(const std::string& cluster,
                                          const Directories& directories) {
  if (!cluster.empty()) return makeClusterStore(cluster, directories);
  return std::make_shared<XmlDirectoryStore>(directories.workgroup,
                                             directories.isWorkgroupRequired);
}

}  // namespace zlutil::settings::host
