#include "nativesettings/change_counts.h"

#include <atomic>
#include <stdexcept>

#include "service/change_counts.h"
#include "values/java_helpers.h"

namespace nativesettings {
namespace {

std::atomic<bool> isShared{false};

}  // namespace

void shareChangeCounts(JNIEnv* env) {
  if (isShared.load(std::memory_order_acquire)) return;
  // Borrowed by Java for good: the host is never unmapped.
  auto& table = zlutil::settings::ChangeCounts::table();
  jobject memory = env->NewDirectByteBuffer(table.data(), sizeof(table));
  try {
    if (memory) changeCounts::give.run(env, memory);
    isShared.store(memory && !env->ExceptionCheck(), std::memory_order_release);
  } catch (const std::runtime_error&) {
    // There is no such method: these are not the Java API's own classes.
  }
  env->ExceptionClear();
  if (memory) env->DeleteLocalRef(memory);
}

void forgetChangeCounts() { isShared = false; }

}  // namespace nativesettings
