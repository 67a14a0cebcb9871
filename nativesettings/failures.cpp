#include "nativesettings/failures.h"

#include <exception>

#include "bridge/java_layer.h"
#include "nativesettings/paths.h"
#include "nativesettings/refusal_reason.h"
#include "values/java/class_records.h"

namespace nativesettings {

void throwJavaExceptionHelper(JNIEnv* env, jzi::ConsInfo& cls, const char* message) {
  if (env->ExceptionCheck()) env->ExceptionClear();
  try {
    env->ThrowNew(jzi::safeFindClass(env, globalConsInfos, cls), message);
  } catch (const std::exception&) {
    // The class is missing: the exception of its lookup stays pending.
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

bool FailureTranslator::prepare(std::string& path) const {
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
    return false;  // the exception that kept the arguments from being read, of a full stack say,
                   // stays
  }
}

void FailureTranslator::withPath(jzi::ConsInfo& cls, const char* prefix) const {
  std::string path;
  if (prepare(path)) throwJavaExceptionHelper(env_, classFor(cls), (prefix + path).c_str());
}

void FailureTranslator::withReason(jzi::ConsInfo& cls, const std::string& reason) const {
  const RefusalReason scope(reason);
  withPath(cls);
}

void FailureTranslator::withMissingNode(jzi::ConsInfo& cls) const {
  if (!hasFoundNode_) return withPath(cls);
  std::string path;
  if (!prepare(path)) return;
  const std::string reason = path + ": it, or a node above it, has been removed meanwhile";
  const RefusalReason scope(reason);
  throwJavaExceptionHelper(env_, classFor(cls), path.c_str());
}

void FailureTranslator::withMessage(jzi::ConsInfo& cls, const std::string& message) const {
  std::string path;
  if (prepare(path)) throwJavaExceptionHelper(env_, classFor(cls), message.c_str());
}

void FailureTranslator::withDetail(jzi::ConsInfo& cls, const char* prefix,
                                   const std::string& detail, const char* failure) const {
  std::string path;
  if (!prepare(path)) return;
  const std::string reason = path + ": " + detail;
  const RefusalReason scope(reason, failure);
  throwJavaExceptionMessageHelper(env_, prefix, path.c_str(), detail, classFor(cls));
}

void FailureTranslator::swallow() const {
  std::string path;
  static_cast<void>(prepare(path));
}

jzi::ConsInfo& FailureTranslator::classFor(jzi::ConsInfo& cls) const {
  return asRuntime_ ? runtimeException : cls;
}

void handleException(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime) {
  translating(FailureTranslator(env, path, key, asRuntime), [] { throw; });
}

}  // namespace nativesettings
