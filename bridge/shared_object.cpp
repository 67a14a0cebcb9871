#include "bridge/shared_object.h"

#include <boost/bind/bind.hpp>
#include <boost/function.hpp>

#include "bridge/java_layer.h"

namespace jzi {
namespace detail {
namespace {

// Deletes a slot and releases its reference.
struct SlotDeleter {
  boost::function0<void> releaseReference;

  void operator()(jobject* slot) const {
    delete slot;
    releaseReference();
  }
};

}  // namespace

boost::shared_ptr<jobject> makeSharedObject(JNIEnv* env, jobject object, MakeReference make,
                                            ReleaseReference release) {
  if (!env || !object) return {};
  const JVMShutdownGuard guard;
  if (!guard.JVMRunning()) return {};
  jobject reference = (env->*make)(object);
  if (env->ExceptionCheck()) env->ExceptionDescribe();
  if (!reference) return {};
  return boost::shared_ptr<jobject>(new jobject(reference),
                                    SlotDeleter{boost::bind(&safeRefDelete, release, reference)});
}

}  // namespace detail
}  // namespace jzi
