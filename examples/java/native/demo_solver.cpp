// The native half of demo.NativeSolver: a solver in C++ that adjusts a setting of the process on a
// thread of its own. It knows the settings service and nothing of Java's listeners.
//
// It is linked to the settings host and must be loaded after the Java API has loaded that, so that
// both mean the same library and the same settings.
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
