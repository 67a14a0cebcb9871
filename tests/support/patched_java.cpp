#include "tests/support/patched_java.h"

namespace test {
namespace {

struct Patch {
  std::set<std::string> missing;
  JavaCalls calls;
  std::string lastFound;
  int callsLeft = 0;
};

const JNINativeInterface_* behind = nullptr;
JNINativeInterface_ patched;
Patch& patch() {
  static auto& only = *new Patch;
  return only;
}

bool raise(JNIEnv* env, const char* error, const char* message) {
  jclass cls = behind->FindClass(env, error);
  behind->ThrowNew(env, cls, message);
  behind->DeleteLocalRef(env, cls);
  return true;
}

bool failsNow(JNIEnv* env) {
  return --patch().callsLeft == 0 && raise(env, "java/lang/OutOfMemoryError", "no memory");
}

bool isMissing(JNIEnv* env, const char* name, const char* error) {
  return patch().missing.count(name) && raise(env, error, name);
}

// The function of that name, which fails when its turn comes; `note` runs before it and `noteMade`
// after it if there is a result `made`.
#define PATCHED(result, name, parameters, arguments, note, noteMade) \
  result JNICALL name parameters {                                   \
    note;                                                            \
    if (failsNow(env)) return result();                              \
    result made = behind->name arguments;                            \
    if (made) noteMade;                                              \
    return made;                                                     \
  }
#define PATCHED_CALL(result, name, Callee)                                         \
  PATCHED(result, name, (JNIEnv * env, Callee callee, jmethodID id, va_list rest), \
          (env, callee, id, rest), , {})

jclass JNICALL FindClass(JNIEnv* env, const char* name) {
  ++patch().calls.lookups;
  patch().lastFound = name;
  jclass found = failsNow(env) || isMissing(env, name, "java/lang/NoClassDefFoundError")
                     ? nullptr
                     : behind->FindClass(env, name);
  if (!found) patch().calls.classes.push_back(std::string("no ") + name);
  return found;
}
jmethodID JNICALL GetStaticMethodID(JNIEnv* env, jclass cls, const char* name, const char* type) {
  ++patch().calls.lookups;
  if (failsNow(env) || isMissing(env, name, "java/lang/NoSuchMethodError")) return nullptr;
  return behind->GetStaticMethodID(env, cls, name, type);
}
jint JNICALL RegisterNatives(JNIEnv* env, jclass cls, const JNINativeMethod* rows, jint count) {
  patch().calls.classes.push_back(patch().lastFound + " " + std::to_string(count));
  return behind->RegisterNatives(env, cls, rows, count);
}
void JNICALL ExceptionDescribe(JNIEnv* env) {
  ++patch().calls.described;
  behind->ExceptionDescribe(env);
}
void JNICALL DeleteGlobalRef(JNIEnv* env, jobject reference) {
  patch().calls.globals -= reference != nullptr;
  behind->DeleteGlobalRef(env, reference);
}
void JNICALL DeleteWeakGlobalRef(JNIEnv* env, jweak reference) {
  patch().calls.weakGlobals -= reference != nullptr;
  behind->DeleteWeakGlobalRef(env, reference);
}
jint JNICALL PushLocalFrame(JNIEnv* env, jint capacity) {
  if (failsNow(env)) return JNI_ENOMEM;
  ++patch().calls.frames;
  return behind->PushLocalFrame(env, capacity);
}
jobject JNICALL PopLocalFrame(JNIEnv* env, jobject result) {
  --patch().calls.frames;
  return behind->PopLocalFrame(env, result);
}
PATCHED(jmethodID, GetMethodID, (JNIEnv * env, jclass cls, const char* name, const char* type),
        (env, cls, name, type), ++patch().calls.lookups, {})
PATCHED(jobject, NewGlobalRef, (JNIEnv * env, jobject object), (env, object), ,
        ++patch().calls.globals)
PATCHED(jweak, NewWeakGlobalRef, (JNIEnv * env, jobject object), (env, object), ,
        ++patch().calls.weakGlobals)
PATCHED(jstring, NewStringUTF, (JNIEnv * env, const char* text), (env, text),
        patch().calls.strings.push_back(text), {})
PATCHED(jobjectArray, NewObjectArray, (JNIEnv * env, jsize length, jclass cls, jobject first),
        (env, length, cls, first), , {})
PATCHED(jobject, NewDirectByteBuffer, (JNIEnv * env, void* memory, jlong size), (env, memory, size),
        , {})
PATCHED_CALL(jobject, NewObjectV, jclass)
PATCHED_CALL(jobject, CallObjectMethodV, jobject)
PATCHED_CALL(jboolean, CallBooleanMethodV, jobject)
PATCHED_CALL(jlong, CallLongMethodV, jobject)
PATCHED_CALL(jdouble, CallDoubleMethodV, jobject)
PATCHED_CALL(jobject, CallStaticObjectMethodV, jclass)
PATCHED_CALL(jint, CallStaticIntMethodV, jclass)

#undef PATCHED_CALL
#undef PATCHED

}  // namespace

PatchedJava::PatchedJava(JNIEnv* env, const std::set<std::string>& missing)
    : env_(env), original_(env->functions) {
  patch() = Patch();
  patch().missing = missing;
  behind = original_;
  patched = *original_;
#define PATCH(name) patched.name = &name
  PATCH(FindClass);
  PATCH(GetMethodID);
  PATCH(GetStaticMethodID);
  PATCH(RegisterNatives);
  PATCH(ExceptionDescribe);
  PATCH(NewGlobalRef);
  PATCH(DeleteGlobalRef);
  PATCH(NewWeakGlobalRef);
  PATCH(DeleteWeakGlobalRef);
  PATCH(PushLocalFrame);
  PATCH(PopLocalFrame);
  PATCH(NewStringUTF);
  PATCH(NewObjectArray);
  PATCH(NewDirectByteBuffer);
  PATCH(NewObjectV);
  PATCH(CallObjectMethodV);
  PATCH(CallBooleanMethodV);
  PATCH(CallLongMethodV);
  PATCH(CallDoubleMethodV);
  PATCH(CallStaticObjectMethodV);
  PATCH(CallStaticIntMethodV);
#undef PATCH
  env_->functions = &patched;
}

PatchedJava::~PatchedJava() { env_->functions = original_; }

const JavaCalls& PatchedJava::calls() const { return patch().calls; }

void PatchedJava::failOn(int n) { patch().callsLeft = n; }

bool PatchedJava::hasFailed() const { return patch().callsLeft <= 0; }

}  // namespace test
