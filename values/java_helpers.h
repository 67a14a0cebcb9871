// The static methods of the Java API's own helper classes: Exchange, Answers, ChangeCounts. A
// crossing between native code and Java costs more than what most crossings do, so these do many
// things in one: they bring all arguments of a call, or build the whole of its answer.
//
// Threads: any, with that thread's environment.
#pragma once

#include <jni.h>

#include <atomic>

#include "bridge/cons_info.h"

namespace nativesettings {

// One static method, resolved at the first call.
class JavaHelper {
 public:
  // The texts are borrowed and must be static.
  constexpr JavaHelper(jzi::ConsInfo& owner, const char* name, const char* signature)
      : owner_(owner), name_(name), signature_(signature) {}

  // Each calls the method with JNI's own conventions for the arguments. An exception that it throws
  // is left pending; the caller of number() and run() has to ask for it, object() is then null.
  // When the method cannot be resolved, std::runtime_error.
  jobject object(JNIEnv* env, ...);
  jlong number(JNIEnv* env, ...);
  void run(JNIEnv* env, ...);

  // Forgets what was resolved; part of unloading.
  void forget() { id_.store(nullptr, std::memory_order_release); }

 private:
  struct Target {
    jclass cls;
    jmethodID id;
  };
  Target resolve(JNIEnv* env);

  jzi::ConsInfo& owner_;
  const char* const name_;
  const char* const signature_;
  std::atomic<jmethodID> id_{nullptr};
};

// Their Javadoc says what they do (Exchange.java, Answers.java, ChangeCounts.java).
namespace exchange {
extern JavaHelper buffer, arguments, change, value, write;
}
namespace answers {
extern JavaHelper box, boxAll, info, infoOf, infoOfAll, names, deliver, deliverAgain;
}
namespace changeCounts {
extern JavaHelper give;
}

// Part of unloading.
void forgetJavaHelpers();

}  // namespace nativesettings
