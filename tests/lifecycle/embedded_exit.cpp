// A C++ program that makes a JVM, lets Java listen while a native thread publishes, and destroys
// the JVM in an orderly way: native work is stopped first, with a bound.
#include <jni.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "bridge/java_layer.h"
#include "service/settings.h"
#include "service/z_settings.h"

namespace {

using zlutil::settings::Settings;

constexpr std::chrono::seconds kBound(10);

int fail(JNIEnv* env, const char* what) {
  if (env->ExceptionCheck()) env->ExceptionDescribe();
  std::fprintf(stderr, "%s\n", what);
  return 1;
}

// Runs the Java half, which registers a listener on the process's node "embedded" and leaves it
// there.
bool startListening(JNIEnv* env) {
  jclass cls = env->FindClass("EmbeddedListener");
  jmethodID start = cls ? env->GetStaticMethodID(cls, "start", "()V") : nullptr;
  if (!start) return false;
  env->CallStaticVoidMethod(cls, start);
  return !env->ExceptionCheck();
}

int heardEvents(JNIEnv* env) {
  jclass cls = env->FindClass("EmbeddedListener");
  jmethodID heard = env->GetStaticMethodID(cls, "heard", "()I");
  const jint count = env->CallStaticIntMethod(cls, heard);
  return env->ExceptionCheck() ? -1 : count;
}

}  // namespace

int main() {
  const auto root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
  using zlutil::settings::ValidatorChoice;
  using zlutil::settings::ZSettings;
  const auto node = ZSettings::createSettingsNode("embedded", false, true, ValidatorChoice());
  node->attachTo(root);
  ZSettings::createSettingsNode("key", true, true, ValidatorChoice())->attachTo(node);

  std::string classPath = std::string("-Djava.class.path=") + std::getenv("TEST_CLASSPATH");
  std::string libraryPath = std::string("-Djava.library.path=") + std::getenv("TEST_LIBRARY_PATH");
  JavaVMOption options[] = {{classPath.data(), nullptr},
                            {libraryPath.data(), nullptr},
                            {const_cast<char*>("-Xcheck:jni"), nullptr}};
  JavaVMInitArgs arguments{JNI_VERSION_1_8, std::size(options), options, JNI_FALSE};
  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;
  if (JNI_CreateJavaVM(&vm, reinterpret_cast<void**>(&env), &arguments) != JNI_OK) return 1;
  if (!startListening(env)) return fail(env, "cannot start the listener");

  std::atomic<bool> goOn{true};
  std::thread publisher([&] {
    for (int value = 0; goOn; ++value) node->setAny("key", value, "session");
  });
  while (heardEvents(env) < 100) std::this_thread::yield();

  // stopJava() waits for native work, but not longer than it is told.
  std::atomic<bool> isHeld{false}, letGo{false};
  std::thread holder([&] {
    const jzi::JavaGuard guard;
    isHeld = true;
    while (!letGo) std::this_thread::yield();
  });
  while (!isHeld) std::this_thread::yield();
  const bool hasWaited = !jzi::stopJava(std::chrono::milliseconds(1));
  letGo = true;
  holder.join();
  if (!hasWaited) return fail(env, "native work was not waited for");
  if (!jzi::stopJava(kBound)) return fail(env, "native work did not come to an end");
  vm->DestroyJavaVM();
  goOn = false;
  publisher.join();  // it has not called Java since stopJava(), so it is not stuck in the JVM
  std::puts("embedded exit done");
  return 0;
}
