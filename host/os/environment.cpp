#include "host/os/environment.h"

#include <charconv>
#include <cstdlib>

#include "host/os/file_name.h"
#include "host/os/log_error.h"

namespace zlutil::settings::host {

std::string environmentText(const char* variable) {
  const char* const value = std::getenv(variable);
  return value ? value : "";
}

std::optional<int> environmentMilliseconds(const char* variable) {
  const std::string text = environmentText(variable);
  if (text.empty()) return std::nullopt;
  int milliseconds = -1;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, milliseconds);
  if (error == std::errc() && stop == end && milliseconds >= 0) return milliseconds;
  logError(std::string(variable) + " is \"" + shownFileName(text) +
           "\", expected a number of milliseconds. The default is used.");
  return std::nullopt;
}

}  // namespace zlutil::settings::host
