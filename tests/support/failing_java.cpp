#include "tests/support/failing_java.h"

namespace testing_support {
namespace {

const JNINativeInterface_* behind = nullptr;
JNINativeInterface_ failing;
int callsLeft = 0;

bool failsNow(JNIEnv* env) {
  if (--callsLeft != 0) return false;
  jclass error = behind->FindClass(env, "java/lang/OutOfMemoryError");
  behind->ThrowNew(env, error, "no memory");
  behind->DeleteLocalRef(env, error);
  return true;
}

// The function of that name that fails when it is time.
#define FAILING_CALL(result, name, parameters, arguments) \
  result JNICALL name parameters { return failsNow(env) ? result() : behind->name arguments; }

FAILING_CALL(jclass, FindClass, (JNIEnv * env, const char* name), (env, name))
FAILING_CALL(jmethodID, GetMethodID,
             (JNIEnv * env, jclass cls, const char* name, const char* signature),
             (env, cls, name, signature))
FAILING_CALL(jmethodID, GetStaticMethodID,
             (JNIEnv * env, jclass cls, const char* name, const char* signature),
             (env, cls, name, signature))
FAILING_CALL(jobject, NewWeakGlobalRef, (JNIEnv * env, jobject object), (env, object))
FAILING_CALL(jobject, NewGlobalRef, (JNIEnv * env, jobject object), (env, object))
FAILING_CALL(jstring, NewStringUTF, (JNIEnv * env, const char* text), (env, text))
FAILING_CALL(jobjectArray, NewObjectArray, (JNIEnv * env, jsize length, jclass cls, jobject first),
             (env, length, cls, first))
FAILING_CALL(jobject, NewDirectByteBuffer, (JNIEnv * env, void* memory, jlong size),
             (env, memory, size))
FAILING_CALL(jobject, NewObjectV, (JNIEnv * env, jclass cls, jmethodID id, va_list rest),
             (env, cls, id, rest))
FAILING_CALL(jobject, CallObjectMethodV, (JNIEnv * env, jobject object, jmethodID id, va_list rest),
             (env, object, id, rest))
FAILING_CALL(jboolean, CallBooleanMethodV,
             (JNIEnv * env, jobject object, jmethodID id, va_list rest), (env, object, id, rest))
FAILING_CALL(jlong, CallLongMethodV, (JNIEnv * env, jobject object, jmethodID id, va_list rest),
             (env, object, id, rest))
FAILING_CALL(jdouble, CallDoubleMethodV, (JNIEnv * env, jobject object, jmethodID id, va_list rest),
             (env, object, id, rest))
FAILING_CALL(jobject, CallStaticObjectMethodV,
             (JNIEnv * env, jclass cls, jmethodID id, va_list rest), (env, cls, id, rest))
FAILING_CALL(jint, CallStaticIntMethodV, (JNIEnv * env, jclass cls, jmethodID id, va_list rest),
             (env, cls, id, rest))

#undef FAILING_CALL

jint JNICALL PushLocalFrame(JNIEnv* env, jint capacity) {
  return failsNow(env) ? JNI_ENOMEM : behind->PushLocalFrame(env, capacity);
}

}  // namespace

FailingJava::FailingJava(JNIEnv* env, int n) : env_(env), original_(env->functions) {
  behind = original_;
  callsLeft = n;
  failing = *original_;
  failing.FindClass = &FindClass;
  failing.GetMethodID = &GetMethodID;
  failing.GetStaticMethodID = &GetStaticMethodID;
  failing.NewWeakGlobalRef = &NewWeakGlobalRef;
  failing.NewGlobalRef = &NewGlobalRef;
  failing.NewStringUTF = &NewStringUTF;
  failing.NewObjectArray = &NewObjectArray;
  failing.NewDirectByteBuffer = &NewDirectByteBuffer;
  failing.NewObjectV = &NewObjectV;
  failing.CallObjectMethodV = &CallObjectMethodV;
  failing.CallBooleanMethodV = &CallBooleanMethodV;
  failing.CallLongMethodV = &CallLongMethodV;
  failing.CallDoubleMethodV = &CallDoubleMethodV;
  failing.CallStaticObjectMethodV = &CallStaticObjectMethodV;
  failing.CallStaticIntMethodV = &CallStaticIntMethodV;
  failing.PushLocalFrame = &PushLocalFrame;
  env_->functions = &failing;
}

FailingJava::~FailingJava() { env_->functions = original_; }

bool FailingJava::hasFailed() const { return callsLeft <= 0; }

}  // namespace testing_support
