#include "service/change_counts.h"

namespace zlutil::settings {

ChangeCounts::Table& ChangeCounts::table() {
  alignas(64) static Table counters{};
  return counters;
}

}  // namespace zlutil::settings
