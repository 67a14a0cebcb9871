#include "host/os/environment.h"

#include <charconv>
#include <cstdlib>
#include <map>

#include "base/mutex.h"
#include "base/never_destroyed.h"
#include "base/text.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "service/application.h"
#include "service/failures.h"

namespace zlutil::settings {
namespace host {
namespace {

// The bytes of variables that have another value for the service.
struct Overrides {
  base::Mutex mutex;
  std::map<std::string, std::string> values GUARDED_BY(mutex);
};

Overrides& theOverrides() {
  static base::NeverDestroyed<Overrides> instance;
  return instance.get();
}

}  // namespace

std::string environmentText(const char* variable) {
  {
    Overrides& overrides = theOverrides();
    const base::MutexLock lock(overrides.mutex);
    const auto found = overrides.values.find(variable);
    if (found != overrides.values.end()) return found->second;
  }
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

}  // namespace host

void overrideEnvironment(const std::string& variable, const std::string& value) {
  const std::optional<std::string> narrow = base::narrowFromMixed(value);
  const std::optional<std::string> bytes =
      narrow ? base::utf8FromNarrow(*narrow) : std::optional<std::string>();
  if (!bytes || bytes->find('\0') != std::string::npos) {
    throw Failure<KORVEN::settings::core::ValidationFailure>(
        "The variable \"" + variable + "\" cannot have the value \"" +
        base::displayFromNarrow(value) + "\".");
  }
  host::Overrides& overrides = host::theOverrides();
  const base::MutexLock lock(overrides.mutex);
  if (value.empty()) {
    overrides.values.erase(variable);
  } else {
    overrides.values[variable] = *bytes;
  }
}

}  // namespace zlutil::settings
