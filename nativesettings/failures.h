// Translation of failures into pending Java exceptions. Threads: any, with that thread's
// environment.
#pragma once

#include <jni.h>

#include <exception>
#include <string>

#include "bridge/cons_info.h"
#include "nativesettings/records.h"
#include "service/failures.h"

namespace nativesettings {

// Raises a Java exception of the record's class with that message (narrow text), in place of one
// that is pending. When the class cannot be found, the JVM's own exception for that is left
// pending.
void throwJavaExceptionHelper(JNIEnv* env, jzi::ConsInfo& cls, const char* message);

// The same with the message: prefix for "name": detail.
void throwJavaExceptionMessageHelper(JNIEnv* env, const char* prefix, const char* name,
                                     std::string detail, jzi::ConsInfo& cls);

// Raises the settings-not-found exception with the dotted path of the two (each may be null).
void throwNotFound(JNIEnv* env, jobjectArray path, jstring key);

// A call that may fail, and the Java exception for each way in which it does. `path` and `key` are
// its arguments and may be null; `asRuntime` makes every settings failure a RuntimeException. A
// Java exception that is pending already is replaced: by a RuntimeException with the text
// `whenPending` if that is not null, otherwise as if it had not been there.
class FailureTranslator {
 public:
  FailureTranslator(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime,
                    const char* whenPending = nullptr)
      : env_(env), path_(path), key_(key), asRuntime_(asRuntime), whenPending_(whenPending) {}

  // Raises an exception of the class with the dotted path, after the prefix.
  void withPath(jzi::ConsInfo& cls, const char* prefix = "") const;
  void with(jzi::ConsInfo& cls, const std::string& message) const;
  // In the form of throwJavaExceptionMessageHelper, with the dotted path for a name.
  void composed(jzi::ConsInfo& cls, const char* prefix, const std::string& detail) const;
  // Raises nothing of its own.
  void unknown() const;

 private:
  // Gets the pending exception and the dotted path out of the way; false when Java has its
  // exception already.
  bool begin(std::string& path) const;
  jzi::ConsInfo& chosen(jzi::ConsInfo& cls) const;

  JNIEnv* const env_;
  const jobjectArray path_;
  const jstring key_;
  const bool asRuntime_;
  const char* const whenPending_;
};

// Runs `body()` and translates the C++ exception that leaves it. One of a type outside the table is
// swallowed, on purpose. A template, so that the exception is caught where the body is: handing it
// on and throwing it again would take longer than the rest of a failure.
template <class Body>
void translating(const FailureTranslator& failed, Body&& body) {
  using namespace KORVEN::settings::core;
  using zlutil::settings::Failure;
  // The order is the meaning: the last clauses would catch what the first ones are for.
  try {
    body();
  } catch (const Failure<NotAKeyName>&) {
    failed.withPath(settingNotFoundException);
  } catch (const Failure<NoSuchKey>&) {
    failed.withPath(settingNotFoundException);
  } catch (const Failure<NoSuchNode>&) {
    failed.withPath(settingNotFoundException);
  } catch (const Failure<NotANodeName>&) {
    failed.withPath(settingNotFoundException);
  } catch (const Failure<UnSupportedLevel>&) {
    failed.withPath(runtimeException, "Unsupported level for ");
  } catch (const Failure<ValueNotDefinedForGivenLevel>&) {
    failed.withPath(settingNotFoundException);
  } catch (const Failure<DefaultValidationFailedOnVoidType>&) {
    failed.withPath(settingValidationException);
  } catch (const Failure<ErrorAddingChildNodeOrKey>&) {
    failed.withPath(settingNameDuplicationException);
  } catch (const Failure<CantModifyValuesOnReadOnlyLevel>&) {
    failed.withPath(settingAccessException);
  } catch (const Failure<CannotMergeWithNodeContainsChildren>&) {
    failed.withPath(unsupportedOperationException, "Path already contains children: ");
  } catch (const Failure<SaxParseException>& e) {
    failed.with(fileNotFoundException, e.GetMessageTxt());
  } catch (const Failure<SaxUnknownException>& e) {
    failed.with(fileNotFoundException, e.GetMessageTxt());
  } catch (const Failure<FileLoadingError>& e) {
    failed.composed(fileNotFoundException, "Settings file could not be loaded", e.GetMessageTxt());
  } catch (const Failure<FailedToRunJavaValidator>& e) {
    failed.with(settingValidationException, e.GetMessageTxt());
  } catch (const Failure<ValidationFailure>& e) {
    failed.with(settingValidationException, e.GetMessageTxt());
  } catch (const Failure<CValidationError>& e) {
    failed.with(settingValidationException, e.GetMessageTxt());
  } catch (const IMsgIDException& e) {
    failed.composed(settingValidationException, "IMsgIDException", e.GetMessageTxt());
  } catch (const IUserException& e) {
    failed.composed(settingValidationException, "IUserException", e.GetMessageTxt());
  } catch (const std::exception& e) {
    failed.composed(runtimeException, "std::exception", e.what());
  } catch (...) {
    failed.unknown();
  }
}

// The same for the C++ exception that is being handled; to be called inside a catch clause only.
void handleException(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime);

}  // namespace nativesettings
