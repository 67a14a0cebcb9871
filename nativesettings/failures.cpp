#include "nativesettings/failures.h"

#include <exception>

#include "bridge/java_layer.h"
#include "nativesettings/paths.h"
#include "values/java/class_records.h"

namespace nativesettings {

void throwJavaExceptionHelper(JNIEnv* env, jzi::ConsInfo& cls, const char* message) {
  if (env->ExceptionCheck()) env->ExceptionClear();
  try {
    env->ThrowNew(jzi::safeFindClass(env, globalConsInfos, cls), message);
  } catch (const std::exception&) {
    // The class is missing: Java sees the exception that its lookup left pending.
  }
}

void throwJavaExceptionMessageHelper(JNIEnv* env, const char* prefix, const char* name,
                                     std::string detail, jzi::ConsInfo& cls) {
  detail.insert(0, std::string(prefix) + " for \"" + name + "\": ");
  throwJavaExceptionHelper(env, cls, detail.c_str());
}

void throwNotFound(JNIEnv* env, jobjectArray path, jstring key) {
  throwJavaExceptionHelper(env, settingNotFoundException,
                           getDotPathFromJava(env, path, key).c_str());
}

bool FailureTranslator::begin(std::string& path) const {
  if (env_->ExceptionCheck()) {
    if (whenPending_) {
      throwJavaExceptionHelper(env_, runtimeException, whenPending_);
      return false;
    }
    env_->ExceptionClear();
  }
  try {
    path = getDotPathFromJava(env_, path_, key_);
    return true;
  } catch (const std::exception&) {
    return false;  // Java sees what keeps it from handing over its arguments, such as a full stack
  }
}

void FailureTranslator::withPath(jzi::ConsInfo& cls, const char* prefix) const {
  std::string path;
  if (begin(path)) throwJavaExceptionHelper(env_, chosen(cls), (prefix + path).c_str());
}

void FailureTranslator::with(jzi::ConsInfo& cls, const std::string& message) const {
  std::string path;
  if (begin(path)) throwJavaExceptionHelper(env_, chosen(cls), message.c_str());
}

void FailureTranslator::composed(jzi::ConsInfo& cls, const char* prefix,
                                 const std::string& detail) const {
  std::string path;
  if (!begin(path)) return;
  throwJavaExceptionMessageHelper(env_, prefix, path.c_str(), detail, chosen(cls));
}

void FailureTranslator::unknown() const {
  std::string path;
  static_cast<void>(begin(path));
}

jzi::ConsInfo& FailureTranslator::chosen(jzi::ConsInfo& cls) const {
  return asRuntime_ ? runtimeException : cls;
}

void handleException(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime) {
  translating(FailureTranslator(env, path, key, asRuntime), [] { throw; });
}

}  // namespace nativesettings
