#include "host/javalayer/vm.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "bridge/java_layer.h"

namespace javalayer {
namespace {

std::atomic<JavaVM*> vm{nullptr};

// 1 once the VM has begun to shut down. The VM's shutdown hook writes it, at any time, through a
// direct byte buffer: this library is never unmapped.
std::atomic<signed char> shutdownBegun{0};
static_assert(sizeof(shutdownBegun) == 1 && std::atomic<signed char>::is_always_lock_free);

std::atomic<bool> stopped{false};

// Detaches the thread when it ends, if it was attached here.
struct Detacher {
  bool attachedHere = false;
  ~Detacher() {
    if (attachedHere && isRunning()) currentVm()->DetachCurrentThread();
  }
};

thread_local Detacher detacher;

// Installs a hook that sets `shutdownBegun` when the VM shuts down. If the program lacks the class,
// because it has Java classes of its own, the VM is taken to run until the process ends.
void installShutdownHook(JNIEnv* env) {
  static constexpr const char* kClass = "com/velonix/services/settings/VmShutdown";
  jclass cls = env->FindClass(kClass);
  jmethodID install =
      cls ? env->GetStaticMethodID(cls, "install", "(Ljava/nio/ByteBuffer;)V") : nullptr;
  jobject flag =
      install ? env->NewDirectByteBuffer(&shutdownBegun, sizeof(shutdownBegun)) : nullptr;
  if (flag) env->CallStaticVoidMethod(cls, install, flag);
  if (env->ExceptionCheck()) {
    env->ExceptionClear();
    // The VM refuses hooks once it shuts down.
    if (flag) shutdownBegun.store(1, std::memory_order_seq_cst);
  }
  if (flag) env->DeleteLocalRef(flag);
  if (cls) env->DeleteLocalRef(cls);
}

}  // namespace

JavaVM* currentVm() noexcept { return vm.load(std::memory_order_acquire); }

bool isRunning() noexcept {
  if (stopped.load(std::memory_order_seq_cst) || !currentVm()) return false;
  if (shutdownBegun.load(std::memory_order_seq_cst) == 0) return true;
  return !detacher.attachedHere && currentEnv() != nullptr;
}

JNIEnv* currentEnv() noexcept {
  void* env = nullptr;
  JavaVM* current = currentVm();
  if (!current || current->GetEnv(&env, kJniVersion) != JNI_OK) return nullptr;
  return static_cast<JNIEnv*>(env);
}

JNIEnv* attachedEnv() noexcept {
  if (JNIEnv* env = currentEnv()) return env;
  JavaVM* current = currentVm();
  if (!current) return nullptr;
  char name[32];
  std::snprintf(name, sizeof(name), "settings-native-%d", static_cast<int>(gettid()));
  JavaVMAttachArgs args{kJniVersion, name, nullptr};
  void* env = nullptr;
  if (current->AttachCurrentThreadAsDaemon(&env, &args) != JNI_OK) return nullptr;
  detacher.attachedHere = true;
  return static_cast<JNIEnv*>(env);
}

void markStopped() noexcept { stopped.store(true, std::memory_order_seq_cst); }

}  // namespace javalayer

JNIEnv* GetJNIEnvR() { return javalayer::currentEnv(); }

void jzi::junit::initJUnitVM(JavaVM* adopted) {
  JavaVM* none = nullptr;
  if (!adopted || !javalayer::vm.compare_exchange_strong(none, adopted)) return;
  if (JNIEnv* env = javalayer::currentEnv()) javalayer::installShutdownHook(env);
}
