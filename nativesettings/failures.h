// Translation of C++ failures into pending Java exceptions. Threads: any, with the environment of
// that thread.
#pragma once

#include <jni.h>

#include <exception>
#include <string>

#include "bridge/cons_info.h"
#include "nativesettings/records.h"
#include "service/failures.h"

namespace nativesettings {

// Raises a Java exception of the record's class with that message (narrow text). It replaces one
// that is pending. If the class cannot be found, the JVM's own exception for that stays pending.
void throwJavaExceptionHelper(JNIEnv* env, jzi::ConsInfo& cls, const char* message);

// Raises one with the message: prefix for "name": detail.
void throwJavaExceptionMessageHelper(JNIEnv* env, const char* prefix, const char* name,
                                     std::string detail, jzi::ConsInfo& cls);

// Raises the settings-not-found exception with the dotted path of the two (each may be null).
void throwNotFound(JNIEnv* env, jobjectArray path, jstring key);

// Makes the Java exceptions for the C++ failures of one call. `path` and `key` are arguments of the
// call and may be null; `asRuntime` makes every settings failure a RuntimeException. A Java
// exception that is pending already is replaced: by a RuntimeException with the text `whenPending`
// if that is not null, otherwise as if it had not been there.
class FailureTranslator {
 public:
  FailureTranslator(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime,
                    const char* whenPending = nullptr)
      : env_(env), path_(path), key_(key), asRuntime_(asRuntime), whenPending_(whenPending) {}

  // Says that the call has found the node at the path before it fails.
  FailureTranslator& afterFindingTheNode() {
    hasFoundNode_ = true;
    return *this;
  }

  // Raises an exception of the class with the dotted path, after the prefix.
  void withPath(jzi::ConsInfo& cls, const char* prefix = "") const;
  // Does the same, and has the host's text ready for the exception's constructor
  // (refusal_reason.h).
  void withReason(jzi::ConsInfo& cls, const std::string& reason) const;
  // Raises one for a node that is missing, with the dotted path; the reason for its constructor is
  // that the node was removed meanwhile, if the call has found it.
  void withMissingNode(jzi::ConsInfo& cls) const;
  void withMessage(jzi::ConsInfo& cls, const std::string& message) const;
  // Raises an exception in the form of throwJavaExceptionMessageHelper, with the dotted path as
  // name. The reason for its constructor is the path with the detail, and the name of the failure.
  void withDetail(jzi::ConsInfo& cls, const char* prefix, const std::string& detail,
                  const char* failure = "") const;
  // Raises nothing of its own; deals with a pending exception as the others do.
  void swallow() const;

 private:
  // Deals with the pending exception and reads the dotted path. Returns false if Java has its
  // exception already.
  bool prepare(std::string& path) const;
  jzi::ConsInfo& classFor(jzi::ConsInfo& cls) const;

  JNIEnv* const env_;
  const jobjectArray path_;
  const jstring key_;
  const bool asRuntime_;
  bool hasFoundNode_ = false;
  const char* const whenPending_;
};

// Runs `body()` and translates the C++ exception that leaves it. One of a type outside the table is
// swallowed, on purpose. A template, so that the exception is caught where the body is: passing it
// on and throwing it again would take longer than the rest of a failure.
template <class Body>
void translating(const FailureTranslator& translator, Body&& body) {
  using namespace KORVEN::settings::core;
  using zlutil::settings::Failure;
  // The order matters: the last clauses would catch what the first ones are for.
  try {
    body();
  } catch (const Failure<NotAKeyName>&) {
    translator.withPath(settingNotFoundException);
  } catch (const Failure<NoSuchKey>&) {
    translator.withPath(settingNotFoundException);
  } catch (const Failure<NoSuchNode>&) {
    translator.withMissingNode(settingNotFoundException);
  } catch (const Failure<NotANodeName>&) {
    translator.withPath(settingNotFoundException);
  } catch (const Failure<UnSupportedLevel>&) {
    translator.withPath(runtimeException, "Unsupported level for ");
  } catch (const Failure<ValueNotDefinedForGivenLevel>&) {
    translator.withPath(settingNotFoundException);
  } catch (const Failure<DefaultValidationFailedOnVoidType>& e) {
    translator.withReason(settingValidationException, e.GetMessageTxt());
  } catch (const Failure<ErrorAddingChildNodeOrKey>& e) {
    translator.withReason(settingNameDuplicationException, e.GetMessageTxt());
  } catch (const Failure<CantModifyValuesOnReadOnlyLevel>& e) {
    translator.withReason(settingAccessException, e.GetMessageTxt());
  } catch (const Failure<CannotMergeWithNodeContainsChildren>&) {
    translator.withPath(unsupportedOperationException, "Path already contains children: ");
  } catch (const Failure<SaxParseException>& e) {
    translator.withMessage(fileNotFoundException, e.GetMessageTxt());
  } catch (const Failure<SaxUnknownException>& e) {
    translator.withMessage(fileNotFoundException, e.GetMessageTxt());
  } catch (const Failure<FileLoadingError>& e) {
    translator.withDetail(fileNotFoundException, "Settings file could not be loaded",
                          e.GetMessageTxt());
  } catch (const Failure<FailedToRunJavaValidator>& e) {
    translator.withMessage(settingValidationException, e.GetMessageTxt());
  } catch (const Failure<ValidationFailure>& e) {
    translator.withMessage(settingValidationException, e.GetMessageTxt());
  } catch (const Failure<CValidationError>& e) {
    translator.withMessage(settingValidationException, e.GetMessageTxt());
  } catch (const IMsgIDException& e) {
    translator.withDetail(settingValidationException, "IMsgIDException", e.GetMessageTxt(),
                          e.GetMsgID().name());
  } catch (const IUserException& e) {
    translator.withDetail(settingValidationException, "IUserException", e.GetMessageTxt());
  } catch (const std::exception& e) {
    translator.withDetail(runtimeException, "std::exception", e.what());
  } catch (...) {
    translator.swallow();
  }
}

// Translates the C++ exception that is being handled. The caller must be inside a catch clause.
void handleException(JNIEnv* env, jobjectArray path, jstring key, bool asRuntime);

}  // namespace nativesettings
