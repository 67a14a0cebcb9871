#include "host/os/log_error.h"

#include <cstdio>

#include "base/text.h"

namespace zlutil::settings::host {

void logError(const std::string& problem) {
  std::fprintf(stderr, "%s\n", base::displayFromNarrow(base::withControlsEscaped(problem)).c_str());
}

}  // namespace zlutil::settings::host
