#include "host/shared_store/document_origin.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <random>
#include <vector>

namespace zlutil::settings::host {

std::string userName() {
  std::vector<char> buffer(16 * 1024);
  struct passwd record;
  struct passwd* found = nullptr;
  getpwuid_r(geteuid(), &record, buffer.data(), buffer.size(), &found);
  return found ? found->pw_name : std::to_string(geteuid());
}

std::string machineName() {
  char name[256] = "";
  gethostname(name, sizeof name - 1);
  return name;
}

std::string timeNow() {
  const std::time_t now = std::time(nullptr);
  struct tm parts;
  char text[32];
  gmtime_r(&now, &parts);
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
}

std::string newCommitName() {
  static std::random_device random;
  char text[24];
  const int size = std::snprintf(text, sizeof text, "%08x%08x", random(), random());
  return std::string(text, static_cast<std::size_t>(size));
}

}  // namespace zlutil::settings::host
