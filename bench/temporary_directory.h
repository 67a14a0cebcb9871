// A directory for the files of one run of a benchmark, in SETTINGS_BENCH_DIR, else in /var/tmp,
// because /tmp may be in memory, where flushing costs nothing.
#pragma once

#include <cstdlib>

#include "tests/support/temporary_directory.h"

namespace bench {

class TemporaryDirectory : public test::TemporaryDirectory {
 public:
  TemporaryDirectory() : test::TemporaryDirectory(parent()) {}

 private:
  static const char* parent() {
    const char* const chosen = std::getenv("SETTINGS_BENCH_DIR");
    return chosen ? chosen : "/var/tmp";
  }
};

}  // namespace bench
