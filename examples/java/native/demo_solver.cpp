// The native half of demo.NativeSolver: changes a setting of the process on a thread of its own. It
// uses the settings service and no Java.
//
// The library is linked to the settings host and must be loaded after the Java API, which loads the
// host, so that both use the same host and the same settings.
#include <jni.h>

#include <cstdio>
#include <exception>
#include <string>
#include <thread>

#include "service/context.h"
#include "service/settings.h"

namespace {

void relaxTolerance() {
  using zlutil::settings::Settings;
  try {
    const auto root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
    const auto solver = root->getChild("solver");
    const double tolerance = boost::any_cast<double>(solver->getValue("tolerance", ""));
    solver->setAny("tolerance", tolerance * 10, "session");
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "the solver failed unexpectedly: %s\n", failure.what());
  }
}

}  // namespace

extern "C" JNIEXPORT void JNICALL Java_demo_NativeSolver_relaxTolerance(JNIEnv*, jclass) {
  std::thread(relaxTolerance).join();
}
