#include "host/os/report.h"

#include <cstdio>

#include "base/text.h"

namespace zlutil::settings::host {

void report(const std::string& problem) {
  std::fprintf(stderr, "%s\n", base::displayFromNarrow(base::withControlsEscaped(problem)).c_str());
}

}  // namespace zlutil::settings::host
