#include "host/os/directories.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace zlutil::settings::host {
namespace {

constexpr char kUserDirectory[] = "velonix/settings";

// Returns "" if the variable is not set.
std::string fromEnvironment(const char* variable) {
  const char* const value = std::getenv(variable);
  return value ? value : "";
}

std::string homeDirectory() {
  std::string home = fromEnvironment("HOME");
  if (!home.empty()) return home;
  std::vector<char> buffer(16 * 1024);
  struct passwd record;
  struct passwd* found = nullptr;
  getpwuid_r(getuid(), &record, buffer.data(), buffer.size(), &found);
  return found ? found->pw_dir : "/";
}

std::string userDirectory() {
  std::string directory = fromEnvironment("SETTINGS_USERDIR");
  if (!directory.empty()) return directory;
  std::string configuration = fromEnvironment("XDG_CONFIG_HOME");
  if (configuration.empty()) configuration = homeDirectory() + "/.config";
  return configuration + '/' + kUserDirectory;
}

std::string factoryDirectory() {
  std::string directory = fromEnvironment("SETTINGS_FACTORYDIR");
  if (!directory.empty()) return directory;
  Dl_info library;
  if (dladdr(reinterpret_cast<void*>(&currentDirectories), &library) == 0) return "factory";
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(library.dli_fname, error);
  return (path.parent_path() / "factory").string();
}

}  // namespace

Directories currentDirectories() {
  return {userDirectory(), fromEnvironment("SETTINGS_WORKGROUPDIR"), factoryDirectory(),
          !fromEnvironment("SETTINGS_FACTORYDIR").empty()};
}

}  // namespace zlutil::settings::host
