#include "service/change_counters.h"

namespace zlutil::settings {

ChangeCounters::Table& ChangeCounters::table() {
  alignas(64) static Table counters{};
  return counters;
}

}  // namespace zlutil::settings
