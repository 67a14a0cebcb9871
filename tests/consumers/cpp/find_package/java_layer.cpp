// Uses the contract of the Java layer and that of the service together.
#include "bridge/java_layer.h"
#include "service/settings.h"

bool stopJavaAtTheEnd(const zlutil::settings::Settings& root) {
  return root.isRoot() && jzi::stopJava(std::chrono::milliseconds(100));
}
