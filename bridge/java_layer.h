// The contract of the host's Java layer: everything that the bridge needs of it to call Java.
// Another host implements these functions in place of libsettingshost.
//
// A function that returns a local reference gives it to the caller's current local frame; a
// borrowed reference stays owned by the layer; an owned one is released by its owner.
//
// Threads: all functions may be called from any thread; those that take a JNIEnv, with that of the
// calling thread. Resolving is race-free: two threads that resolve the same class or method at once
// get the same result, and nothing leaks.
//
// Failures: if a class cannot be found, the JVM's own exception stays pending and
// std::runtime_error ("java class not found: " and the name) is thrown. If a method cannot be
// found, the JVM's exception stays pending and the result is null.
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

// Returns the environment of the calling thread in the VM of the Java layer; null if it has no VM,
// or if the thread is not attached.
SETTINGS_HOST_API JNIEnv* GetJNIEnvR();

// Returns the narrow text of a Java string, exactly that of GetStringUTFChars; "" for null.
SETTINGS_HOST_API std::string zljGetStdString(JNIEnv* env, jstring text);
SETTINGS_HOST_API void zljGetStdString(std::string& out, JNIEnv* env, jstring text);

// Returns the 16-bit units of a Java string; none for null.
SETTINGS_HOST_API base::ustring zljGetUstring(JNIEnv* env, jstring text);

// A local-reference frame. References made while it exists end with it.
class SETTINGS_HOST_API zljLocalReferenceFrame {
 public:
  // If the JVM has no memory for the frame, there is none, and references live on.
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

// Makes the Java layer use a VM that it did not create. The first VM stays; a null VM is ignored.
// From then on the layer notices by itself when the VM begins to go down.
SETTINGS_HOST_API void initJUnitVM(JavaVM* vm);

}  // namespace junit

// The natives of one Java class. Borrowed for the duration of the registration.
struct jziNatives_t {
  const char* className;
  std::size_t count;
  const JNINativeMethod* methods;
};

// Finds the class and registers its natives. From then on the library that has the table of methods
// looks its classes up in that class's loader. Returns false if that fails, with a line on standard
// error and no exception left pending.
SETTINGS_HOST_API bool registerNativesImpl(JNIEnv* env, const jziNatives_t& natives);

// Ends Java for native code, for a program that is about to destroy its VM: from now on every guard
// says that the JVM is not running. Waits until the guards of other threads are closed, at most
// `bound`; returns whether they are.
SETTINGS_HOST_API bool stopJava(std::chrono::milliseconds bound);

// Returns the class of a record, borrowed. The first use resolves it by name, caches it in the
// record and enters the record into the set.
SETTINGS_HOST_API jclass safeFindClass(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo& record);

// Does the same for a cache slot without a record, which owns the reference (bridge/class_slot.h).
SETTINGS_HOST_API jclass safeFindClass(JNIEnv* env, std::atomic<jclass>& slot,
                                       const char* className);

// Returns the identifier of a method of the record's class, resolved once into the slot.
SETTINGS_HOST_API jmethodID safeGetMethodID(JNIEnv* env, std::set<ConsInfo*>& records,
                                            ConsInfo& record, std::atomic<jmethodID>& slot,
                                            const char* name, const char* signature, bool isStatic);

// Returns the identifier of an instance method of a class, resolved once into the slot.
SETTINGS_HOST_API jmethodID safeGetMethodID(JNIEnv* env, jclass cls, std::atomic<jmethodID>& slot,
                                            const char* name, const char* signature);

// Returns a new object of the record's class, a local reference, made by the record's constructor
// from the variable arguments (JNI's own conventions). Returns null with the Java exception pending
// if the constructor throws. Throws std::runtime_error if there is no such constructor.
SETTINGS_HOST_API jobject construct(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo* record,
                                    ...);

// Returns the record's class, borrowed. Resolves it if needed, without entering it into a set.
SETTINGS_HOST_API jclass getClass(JNIEnv* env, ConsInfo& record);

// Releases all classes and methods that were resolved for the records of the library that the set
// belongs to, resets each record of the set and empties it. Other bridges keep theirs.
SETTINGS_HOST_API void clearConstructors(std::set<ConsInfo*>& records);

// Returns the message of the pending Java exception (its class and message if it has none); "" if
// none is pending. The exception stays pending.
SETTINGS_HOST_API std::string extractExceptionMessage(JNIEnv* env);

// The shutdown guard: says whether the JVM still runs, and counts its scope as native work in
// progress.
class SETTINGS_HOST_API JVMShutdownGuard {
 public:
  JVMShutdownGuard();
  ~JVMShutdownGuard();
  JVMShutdownGuard(const JVMShutdownGuard&) = delete;
  JVMShutdownGuard& operator=(const JVMShutdownGuard&) = delete;

  // Returns false once the VM is going down, and while there is none. While the VM runs its
  // shutdown hooks, returns true on threads that run Java code.
  bool JVMRunning() const { return running_; }

 private:
  const std::size_t stripe_;
  const bool running_;
};

// The shutdown guard of the body of a native method.
class NativeShutdownGuard : public JVMShutdownGuard {
 public:
  explicit NativeShutdownGuard(JNIEnv*) {}
};

// An environment for code that Java did not call. Attaches the thread as a daemon if the JVM does
// not know it (once per thread; such a thread is detached when it ends), and opens a local frame.
// Guards may nest.
class SETTINGS_HOST_API JavaGuard {
 public:
  JavaGuard();
  ~JavaGuard();
  JavaGuard(const JavaGuard&) = delete;
  JavaGuard& operator=(const JavaGuard&) = delete;

  // Returns null if the JVM is not running.
  JNIEnv* env() const { return env_; }

 private:
  const JVMShutdownGuard running_;
  JNIEnv* const env_;
  const bool pushed_;
};

namespace detail {

// Releases the reference by a JNI function, on any thread, while the JVM still runs. Afterwards
// does nothing: the reference has ended with the JVM.
SETTINGS_HOST_API void safeRefDelete(void (JNIEnv::*release)(jobject), jobject reference);

}  // namespace detail
}  // namespace jzi
