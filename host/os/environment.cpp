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

std::optional<int> environmentNumber(const char* variable, const char* units) {
  const std::string text = environmentText(variable);
  if (text.empty()) return std::nullopt;
  int number = -1;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end && number >= 0) return number;
  logError(std::string(variable) + " is \"" + shownFileName(text) + "\", expected a number of " +
           units + ". The default is used.");
  return std::nullopt;
}

}  // namespace zlutil::settings::host
