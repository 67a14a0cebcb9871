// The contract of the host's Java layer: everything that the bridge needs of it to call Java. A
// host of somebody's own implements these functions in place of libsettingshost.
//
// Vocabulary: a function that returns a local reference gives it to the caller's current local
// frame; a borrowed reference stays owned by the layer; an owned one is released by its owner.
//
// Threads: all functions may be called from any thread; those that take a JNIEnv, with that of the
// calling thread. Resolving is race-free: two threads that resolve the same class or method at once
// get the same answer, and nothing leaks.
//
// Failures: a class that cannot be found leaves the JVM's own exception pending and throws
// std::runtime_error ("java class not found: " and the name). A method that cannot be found leaves
// the JVM's exception pending and gives null.
#pragma once

#include <jni.h>

#include <atomic>
#include <chrono>
#include <set>
#include <string>

#include "base/export.h"
#include "base/text.h"
#include "bridge/cons_info.h"

static_assert(sizeof(jlong) == sizeof(long), "a handle travels in a jlong");

// The environment of the calling thread in the VM that the Java layer works with; null when it has
// no VM, or when the thread is not attached.
SETTINGS_HOST_API JNIEnv* GetJNIEnvR();

// The text of a Java string in the narrow form, exactly what GetStringUTFChars gives; "" for null.
SETTINGS_HOST_API std::string zljGetStdString(JNIEnv* env, jstring text);
SETTINGS_HOST_API void zljGetStdString(std::string& out, JNIEnv* env, jstring text);

// The 16-bit units of a Java string; empty for null.
SETTINGS_HOST_API base::ustring zljGetUstring(JNIEnv* env, jstring text);

// A local-reference frame: references made while it exists end with it.
class SETTINGS_HOST_API zljLocalReferenceFrame {
 public:
  // When the JVM refuses the frame (no memory), there is none, and references live on.
  zljLocalReferenceFrame(JNIEnv* env, jint capacity);
  ~zljLocalReferenceFrame();
  zljLocalReferenceFrame(const zljLocalReferenceFrame&) = delete;
  zljLocalReferenceFrame& operator=(const zljLocalReferenceFrame&) = delete;

 private:
  JNIEnv* const env_;
  const bool pushed_;
};

namespace jzi {

namespace junit {

// Lets the Java layer work with a VM that it did not create. The first VM stays; a null VM is
// ignored. From then on the layer notices by itself when the VM begins to go down.
SETTINGS_HOST_API void initJUnitVM(JavaVM* vm);

}  // namespace junit

// The natives of one Java class. Borrowed for the duration of the registration.
struct jziNatives_t {
  const char* className;
  std::size_t count;
  const JNINativeMethod* methods;
};

// Finds the class and registers its natives; the library that has the table of methods looks its
// classes up in that class's loader from then on. False, with a line on standard error and no
// exception left pending, when that fails.
SETTINGS_HOST_API bool registerNativesImpl(JNIEnv* env, const jziNatives_t& natives);

// Ends Java for native code, for a program that is about to destroy its VM: from now on every guard
// answers that the JVM is not running. Waits until the guards of other threads are closed, at most
// `bound`; true when they are.
SETTINGS_HOST_API bool stopJava(std::chrono::milliseconds bound);

// The class of a record: resolved by name at first use, then remembered in the record, which enters
// the set. Borrowed.
SETTINGS_HOST_API jclass safeFindClass(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo& record);

// The same for a bare cache slot, which owns the reference (bridge/class_slot.h).
SETTINGS_HOST_API jclass safeFindClass(JNIEnv* env, std::atomic<jclass>& slot,
                                       const char* className);

// The identifier of a method of the record's class, resolved once into the slot.
SETTINGS_HOST_API jmethodID safeGetMethodID(JNIEnv* env, std::set<ConsInfo*>& records,
                                            ConsInfo& record, std::atomic<jmethodID>& slot,
                                            const char* name, const char* signature, bool isStatic);

// The identifier of an instance method of a class, resolved once into the slot.
SETTINGS_HOST_API jmethodID safeGetMethodID(JNIEnv* env, jclass cls, std::atomic<jmethodID>& slot,
                                            const char* name, const char* signature);

// A new object of the record's class, made by the record's constructor from the variable arguments
// (JNI's own conventions). A local reference; null with the Java exception pending when the
// constructor throws. A missing constructor is a std::runtime_error.
SETTINGS_HOST_API jobject construct(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo* record,
                                    ...);

// The record's class, resolved if need be, without entering it into a set. Borrowed.
SETTINGS_HOST_API jclass getClass(JNIEnv* env, ConsInfo& record);

// Releases everything that was resolved for the records of the library that the set belongs to,
// resets each record of the set and empties it. Other bridges keep theirs.
SETTINGS_HOST_API void clearConstructors(std::set<ConsInfo*>& records);

// The message of the pending Java exception (its class and message when it has none); "" when none
// is pending. The exception stays pending.
SETTINGS_HOST_API std::string extractExceptionMessage(JNIEnv* env);

// Tells whether the JVM still runs, and counts its scope as native work in progress.
class SETTINGS_HOST_API JVMShutdownGuard {
 public:
  JVMShutdownGuard();
  ~JVMShutdownGuard();
  JVMShutdownGuard(const JVMShutdownGuard&) = delete;
  JVMShutdownGuard& operator=(const JVMShutdownGuard&) = delete;

  // False from the moment at which the VM begins to go down, and while there is none.
  bool JVMRunning() const { return running_; }

 private:
  const std::size_t stripe_;
  const bool running_;
};

// The same for the body of a native method.
class NativeShutdownGuard : public JVMShutdownGuard {
 public:
  explicit NativeShutdownGuard(JNIEnv*) {}
};

// An environment for code that Java did not call. Attaches the thread as a daemon when it is
// unknown to the JVM (once per thread; the thread is detached when it ends, if it was attached
// here), and opens a local-reference frame. Guards may nest.
class SETTINGS_HOST_API JavaGuard {
 public:
  JavaGuard();
  ~JavaGuard();
  JavaGuard(const JavaGuard&) = delete;
  JavaGuard& operator=(const JavaGuard&) = delete;

  // Null when the JVM is not running.
  JNIEnv* env() const { return env_; }

 private:
  const JVMShutdownGuard running_;
  JNIEnv* const env_;
  const bool pushed_;
};

namespace detail {

// Applies a releasing JNI function to the reference, on whatever thread this is, while the JVM
// still runs; afterwards does nothing, for the JVM has taken the reference with it.
SETTINGS_HOST_API void safeRefDelete(void (JNIEnv::*release)(jobject), jobject reference);

}  // namespace detail
}  // namespace jzi
