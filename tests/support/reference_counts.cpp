#include "tests/support/reference_counts.h"

namespace testing_support {
namespace {

const JNINativeInterface_* behind = nullptr;
JNINativeInterface_ counting;
ReferenceCounts now;

jobject JNICALL newGlobalRef(JNIEnv* env, jobject object) {
  jobject made = behind->NewGlobalRef(env, object);
  now.globals += made != nullptr;
  return made;
}
void JNICALL deleteGlobalRef(JNIEnv* env, jobject reference) {
  now.globals -= reference != nullptr;
  behind->DeleteGlobalRef(env, reference);
}
jweak JNICALL newWeakGlobalRef(JNIEnv* env, jobject object) {
  jweak made = behind->NewWeakGlobalRef(env, object);
  now.weakGlobals += made != nullptr;
  return made;
}
void JNICALL deleteWeakGlobalRef(JNIEnv* env, jweak reference) {
  now.weakGlobals -= reference != nullptr;
  behind->DeleteWeakGlobalRef(env, reference);
}
jint JNICALL pushLocalFrame(JNIEnv* env, jint capacity) {
  ++now.frames;
  return behind->PushLocalFrame(env, capacity);
}
jobject JNICALL popLocalFrame(JNIEnv* env, jobject result) {
  --now.frames;
  return behind->PopLocalFrame(env, result);
}
jclass JNICALL findClass(JNIEnv* env, const char* name) {
  ++now.classLookups;
  return behind->FindClass(env, name);
}
jmethodID JNICALL getMethodID(JNIEnv* env, jclass cls, const char* name, const char* signature) {
  ++now.classLookups;
  return behind->GetMethodID(env, cls, name, signature);
}
jmethodID JNICALL getStaticMethodID(JNIEnv* env, jclass cls, const char* name,
                                    const char* signature) {
  ++now.classLookups;
  return behind->GetStaticMethodID(env, cls, name, signature);
}

}  // namespace

CountReferences::CountReferences(JNIEnv* env) : env_(env), original_(env->functions) {
  behind = original_;
  counting = *original_;
  counting.NewGlobalRef = &newGlobalRef;
  counting.DeleteGlobalRef = &deleteGlobalRef;
  counting.NewWeakGlobalRef = &newWeakGlobalRef;
  counting.DeleteWeakGlobalRef = &deleteWeakGlobalRef;
  counting.PushLocalFrame = &pushLocalFrame;
  counting.PopLocalFrame = &popLocalFrame;
  counting.FindClass = &findClass;
  counting.GetMethodID = &getMethodID;
  counting.GetStaticMethodID = &getStaticMethodID;
  now = ReferenceCounts();
  env_->functions = &counting;
}

CountReferences::~CountReferences() { env_->functions = original_; }

const ReferenceCounts& CountReferences::counts() const { return now; }

}  // namespace testing_support
