#include "tests/bridge_contract/patched_java.h"

namespace testing_support {
namespace {

struct Noted {
  std::set<std::string> missing;
  std::vector<std::string> strings;
  std::vector<std::string> classes;
  std::string lastFound;
  int described = 0;
};

const JNINativeInterface_* behind = nullptr;
JNINativeInterface_ patched;
Noted& noted() {
  static auto& all = *new Noted;
  return all;
}

bool isMissing(JNIEnv* env, const std::string& name, const char* error) {
  if (!noted().missing.count(name)) return false;
  behind->ThrowNew(env, behind->FindClass(env, error), name.c_str());
  return true;
}

jclass JNICALL findClass(JNIEnv* env, const char* name) {
  jclass found = isMissing(env, name, "java/lang/NoClassDefFoundError")
                     ? nullptr
                     : behind->FindClass(env, name);
  noted().lastFound = name;
  if (!found) noted().classes.push_back(std::string("no ") + name);
  return found;
}
jmethodID JNICALL getStaticMethodID(JNIEnv* env, jclass cls, const char* name, const char* type) {
  if (isMissing(env, name, "java/lang/NoSuchMethodError")) return nullptr;
  return behind->GetStaticMethodID(env, cls, name, type);
}
jint JNICALL registerNatives(JNIEnv* env, jclass cls, const JNINativeMethod* rows, jint count) {
  noted().classes.push_back(noted().lastFound + " " + std::to_string(count));
  return behind->RegisterNatives(env, cls, rows, count);
}
jstring JNICALL newStringUTF(JNIEnv* env, const char* text) {
  noted().strings.push_back(text);
  return behind->NewStringUTF(env, text);
}
void JNICALL exceptionDescribe(JNIEnv* env) {
  ++noted().described;
  behind->ExceptionDescribe(env);
}

}  // namespace

PatchedJava::PatchedJava(JNIEnv* env, const std::set<std::string>& missing)
    : env_(env), original_(env->functions) {
  noted() = Noted();
  noted().missing = missing;
  behind = original_;
  patched = *original_;
  patched.FindClass = &findClass;
  patched.GetStaticMethodID = &getStaticMethodID;
  patched.RegisterNatives = &registerNatives;
  patched.NewStringUTF = &newStringUTF;
  patched.ExceptionDescribe = &exceptionDescribe;
  env_->functions = &patched;
}

PatchedJava::~PatchedJava() { env_->functions = original_; }

const std::vector<std::string>& PatchedJava::strings() const { return noted().strings; }
const std::vector<std::string>& PatchedJava::classes() const { return noted().classes; }
int PatchedJava::described() const { return noted().described; }

}  // namespace testing_support
