// The native half of NativePublisher: C++ code of an application that changes settings on threads
// of its own, through the service alone.
#include <jni.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "service/settings.h"

namespace {

void setByPath(const std::string& path, int value) {
  using zlutil::settings::Settings;
  const boost::shared_ptr<Settings> root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
  const std::vector<std::pair<std::string, boost::any>> changes = {{path, value}};
  root->multipleSet(changes.begin(), changes.end(), "session");
}

std::string textOf(JNIEnv* env, jstring text) {
  const char* bytes = env->GetStringUTFChars(text, nullptr);
  std::string result(bytes);
  env->ReleaseStringUTFChars(text, bytes);
  return result;
}

}  // namespace

extern "C" JNIEXPORT void JNICALL Java_NativePublisher_setOnce(JNIEnv* env, jclass, jstring path,
                                                               jint value) {
  std::thread(setByPath, textOf(env, path), value).join();
}

extern "C" JNIEXPORT void JNICALL Java_NativePublisher_setForEver(JNIEnv* env, jclass,
                                                                  jstring path) {
  std::thread([path = textOf(env, path)] {
    for (int value = 0;; ++value) setByPath(path, value);
  }).detach();
}
