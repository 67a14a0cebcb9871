#include "nativesettings/lane.h"

#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "service/change_counts.h"

namespace nativesettings {
namespace {

using zlutil::settings::ChangeCounts;

constexpr const char* kLaneClass = "com/velonix/services/settings/NativeLane";

// Returns the memory of the service's change counters, which Java borrows for good: the host is
// never unmapped. Null when the host has none.
jobject changeCounters(JNIEnv* env, jclass) {
  if (!&ChangeCounts::table) return nullptr;
  ChangeCounts::Table& table = ChangeCounts::table();
  return env->NewDirectByteBuffer(table.data(), sizeof(table));
}

jboolean wasRefused(JNIEnv*, jclass) { return NativeFrame::wasRefused(); }

template <class Function>
JNINativeMethod row(const char* name, const char* signature, Function* function) {
  return {const_cast<char*>(name), const_cast<char*>(signature), reinterpret_cast<void*>(function)};
}

}  // namespace

void registerLane(JNIEnv* env) {
  jclass cls = env->FindClass(kLaneClass);
  if (!cls) return env->ExceptionClear();
  const JNINativeMethod methods[] = {
      row("changeCounters", "()Ljava/nio/ByteBuffer;", &changeCounters),
      row("wasRefused", "()Z", &wasRefused),
  };
  env->DeleteLocalRef(cls);
  static_cast<void>(jzi::registerNativesImpl(env, {kLaneClass, std::size(methods), methods}));
}

}  // namespace nativesettings
