// The scoped guards, and the count of native work in progress.
#include <array>
#include <atomic>
#include <thread>

#include "base/thread_stripe.h"
#include "bridge/java_layer.h"
#include "host/javalayer/vm.h"

namespace jzi {
namespace {

// The references for which a guard's frame has room before the JVM has to grow it.
constexpr jint kGuardFrame = 16;

// The guards that are open on the threads of one stripe. A guard closes on the thread that opened
// it.
struct alignas(base::kCacheLine) OpenGuards {
  std::atomic<long> count{0};
};
std::array<OpenGuards, base::kThreadStripes> openGuards;
thread_local long openOnThisThread = 0;

long openOnOtherThreads() {
  long sum = -openOnThisThread;
  for (const OpenGuards& stripe : openGuards) sum += stripe.count.load(std::memory_order_seq_cst);
  return sum;
}

}  // namespace

JVMShutdownGuard::JVMShutdownGuard()
    : stripe_(base::threadStripe()), running_([this] {
        // Counts before it reads the flag: either stopJava() sees the count, or this sees the flag.
        ++openOnThisThread;
        openGuards[stripe_].count.fetch_add(1, std::memory_order_seq_cst);
        return javalayer::isRunning();
      }()) {}

JVMShutdownGuard::~JVMShutdownGuard() {
  --openOnThisThread;
  openGuards[stripe_].count.fetch_sub(1, std::memory_order_release);
}

JavaGuard::JavaGuard()
    : env_(running_.JVMRunning() ? javalayer::attachedEnv() : nullptr),
      pushed_(env_ && env_->PushLocalFrame(kGuardFrame) == JNI_OK) {
  if (env_ && !pushed_) env_->ExceptionClear();
}

JavaGuard::~JavaGuard() {
  if (pushed_) env_->PopLocalFrame(nullptr);
}

bool stopJava(std::chrono::milliseconds bound) {
  javalayer::markStopped();
  const auto end = std::chrono::steady_clock::now() + bound;
  while (openOnOtherThreads() > 0) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace jzi
