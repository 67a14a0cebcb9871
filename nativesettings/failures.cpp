#include "nativesettings/failures.h"

#include <exception>

#include "bridge/java_layer.h"
#include "nativesettings/paths.h"
#include "nativesettings/records.h"
#include "service/failures.h"
#include "values/class_records.h"

namespace nativesettings {
namespace {

using namespace KORVEN::settings::core;
using zlutil::settings::Failure;

// The Java exception of one failed call.
class Raiser {
 public:
  Raiser(JNIEnv* env, std::string path, bool asRuntime)
      : env_(env), path_(std::move(path)), asRuntime_(asRuntime) {}

  void withPath(jzi::ConsInfo& cls) const { with(cls, path_); }

  void with(jzi::ConsInfo& cls, const std::string& message) const {
    throwJavaExceptionHelper(env_, chosen(cls), message.c_str());
  }

  void composed(jzi::ConsInfo& cls, const char* prefix, const std::string& detail) const {
    throwJavaExceptionMessageHelper(env_, prefix, path_.c_str(), detail, chosen(cls));
  }

  const std::string& path() const { return path_; }

 private:
  jzi::ConsInfo& chosen(jzi::ConsInfo& cls) const { return asRuntime_ ? runtimeException : cls; }

  JNIEnv* const env_;
  const std::string path_;
  const bool asRuntime_;
};

}  // namespace

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
  const std::string message = std::string(prefix) + " for \"" + name + "\": " + detail;
  throwJavaExceptionHelper(env, cls, message.c_str());
}

void throwNotFound(JNIEnv* env, jobjectArray path, jstring key) {
  throwJavaExceptionHelper(env, settingNotFoundException,
                           getDotPathFromJava(env, path, key).c_str());
}

void handleException(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime) {
  if (env->ExceptionCheck()) env->ExceptionClear();
  const Raiser raise(env, getDotPathFromJava(env, path, key), asRuntime);
  // The order is the meaning: the last clauses would catch what the first ones are for.
  try {
    throw;
  } catch (const Failure<NotAKeyName>&) {
    raise.withPath(settingNotFoundException);
  } catch (const Failure<NoSuchKey>&) {
    raise.withPath(settingNotFoundException);
  } catch (const Failure<NoSuchNode>&) {
    raise.withPath(settingNotFoundException);
  } catch (const Failure<NotANodeName>&) {
    raise.withPath(settingNotFoundException);
  } catch (const Failure<UnSupportedLevel>&) {
    raise.with(runtimeException, "Unsupported level for " + raise.path());
  } catch (const Failure<ValueNotDefinedForGivenLevel>&) {
    raise.withPath(settingNotFoundException);
  } catch (const Failure<DefaultValidationFailedOnVoidType>&) {
    raise.withPath(settingValidationException);
  } catch (const Failure<ErrorAddingChildNodeOrKey>&) {
    raise.withPath(settingNameDuplicationException);
  } catch (const Failure<CantModifyValuesOnReadOnlyLevel>&) {
    raise.withPath(settingAccessException);
  } catch (const Failure<CannotMergeWithNodeContainsChildren>&) {
    raise.with(unsupportedOperationException, "Path already contains children: " + raise.path());
  } catch (const Failure<SaxParseException>& e) {
    raise.with(fileNotFoundException, e.GetMessageTxt());
  } catch (const Failure<SaxUnknownException>& e) {
    raise.with(fileNotFoundException, e.GetMessageTxt());
  } catch (const Failure<FileLoadingError>& e) {
    raise.composed(fileNotFoundException, "Settings file could not be loaded", e.GetMessageTxt());
  } catch (const Failure<FailedToRunJavaValidator>& e) {
    raise.with(settingValidationException, e.GetMessageTxt());
  } catch (const Failure<ValidationFailure>& e) {
    raise.with(settingValidationException, e.GetMessageTxt());
  } catch (const Failure<CValidationError>& e) {
    raise.with(settingValidationException, e.GetMessageTxt());
  } catch (const IMsgIDException& e) {
    raise.composed(settingValidationException, "IMsgIDException", e.GetMessageTxt());
  } catch (const IUserException& e) {
    raise.composed(settingValidationException, "IUserException", e.GetMessageTxt());
  } catch (const std::exception& e) {
    raise.composed(runtimeException, "std::exception", e.what());
  } catch (...) {
    // Swallowed on purpose: the native method returns its default value and raises nothing.
  }
}

}  // namespace nativesettings
