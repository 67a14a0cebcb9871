// Does not compile: a setting cannot be a long long.
#include "service/settings.h"

long long unsupported(const zlutil::settings::Settings& node) { return node.get<long long>("key"); }
