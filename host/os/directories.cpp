#include "host/os/directories.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "host/os/environment.h"

namespace zlutil::settings::host {
namespace {

constexpr char kUserDirectory[] = "velonix/settings";

std::string homeDirectory() {
  std::string home = environmentText("HOME");
  if (!home.empty()) return home;
  std::vector<char> buffer(16 * 1024);
  struct passwd record;
  struct passwd* found = nullptr;
  getpwuid_r(getuid(), &record, buffer.data(), buffer.size(), &found);
  return found ? found->pw_dir : "/";
}

std::string userDirectory() {
  std::string directory = environmentText("SETTINGS_USERDIR");
  if (!directory.empty()) return directory;
  std::string configuration = environmentText("XDG_CONFIG_HOME");
  if (configuration.empty()) configuration = homeDirectory() + "/.config";
  return configuration + '/' + kUserDirectory;
}

std::string factoryDirectory() {
  std::string directory = environmentText("SETTINGS_FACTORYDIR");
  if (!directory.empty()) return directory;
  Dl_info library;
  if (dladdr(reinterpret_cast<void*>(&currentDirectories), &library) == 0) return "factory";
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(library.dli_fname, error);
  return (path.parent_path() / "factory").string();
}

}  // namespace

Directories currentDirectories() {
  return {userDirectory(), environmentText("SETTINGS_WORKGROUPDIR"), factoryDirectory(),
          !environmentText("SETTINGS_FACTORYDIR").empty(), true};
}

}  // namespace zlutil::settings::host
