#include "tests/support/jvm.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "bridge/java_layer.h"
#include "tests/support/temporary_directory.h"

extern "C" jint JNICALL JNI_OnLoad(JavaVM*, void*);

namespace test {
namespace {

constexpr jint kTestFrame = 512;

std::mutex warningsMutex;
std::vector<std::string>& warnings() {
  static auto& all = *new std::vector<std::string>;
  return all;
}

jint JNICALL messageHook(FILE* stream, const char* format, va_list arguments) {
  char line[2048];
  const int length = std::vsnprintf(line, sizeof(line), format, arguments);
  const std::string message(line);
  for (const char* sign : {"WARNING in native method", "FATAL ERROR in native method",
                           "JNI local refs:", "Warning: Calling other JNI"}) {
    if (message.find(sign) == std::string::npos) continue;
    const std::lock_guard<std::mutex> lock(warningsMutex);
    warnings().push_back(message);
  }
  std::fputs(line, stream);
  return length;
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

struct Jvm {
  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;

  Jvm() {
    // Removed when the process exits.
    static const test::TemporaryDirectory userDirectory;
    setenv("SETTINGS_USERDIR", userDirectory.path().c_str(), 1);
    std::string classPath = "-Djava.class.path=" + environment("TEST_CLASSPATH");
    JavaVMOption options[] = {
        {classPath.data(), nullptr},
        {const_cast<char*>("-Xcheck:jni"), nullptr},
        {const_cast<char*>("-Xmx512m"), nullptr},
        {const_cast<char*>("-XX:-CreateCoredumpOnCrash"), nullptr},
        {const_cast<char*>("vfprintf"), reinterpret_cast<void*>(&messageHook)},
    };
    JavaVMInitArgs arguments{JNI_VERSION_1_8, std::size(options), options, JNI_FALSE};
    if (JNI_CreateJavaVM(&vm, reinterpret_cast<void**>(&env), &arguments) != JNI_OK) {
      std::fputs("cannot create the JVM\n", stderr);
      std::abort();
    }
    if (JNI_OnLoad(vm, nullptr) != JNI_VERSION_1_4) std::abort();
  }
};

Jvm& theJvm() {
  static auto& made = *new Jvm;
  return made;
}

}  // namespace

JNIEnv* jvmEnv() { return theJvm().env; }
JavaVM* jvm() { return theJvm().vm; }

std::vector<std::string> takeJniWarnings() {
  const std::lock_guard<std::mutex> lock(warningsMutex);
  std::vector<std::string> taken;
  taken.swap(warnings());
  return taken;
}

std::string takeException(JNIEnv* env) {
  jthrowable pending = env->ExceptionOccurred();
  if (!pending) return "";
  env->ExceptionClear();
  jclass cls = env->GetObjectClass(pending);
  jmethodID toString = env->GetMethodID(cls, "toString", "()Ljava/lang/String;");
  auto text = static_cast<jstring>(env->CallObjectMethod(pending, toString));
  if (env->ExceptionCheck() || !text) {
    env->ExceptionClear();
    return "?";
  }
  const char* bytes = env->GetStringUTFChars(text, nullptr);
  std::string result(bytes);
  env->ReleaseStringUTFChars(text, bytes);
  return result;
}

void JvmTest::SetUp() {
  env_ = jvmEnv();
  ASSERT_EQ(env_->PushLocalFrame(kTestFrame), JNI_OK);
  takeJniWarnings();
}

void JvmTest::TearDown() {
  EXPECT_EQ(takeException(env_), "") << "left pending";
  env_->PopLocalFrame(nullptr);
  EXPECT_EQ(std::vector<std::string>(), takeJniWarnings());
}

jstring JvmTest::str(const std::string& narrow) { return env_->NewStringUTF(narrow.c_str()); }

jobjectArray JvmTest::path(const std::vector<std::string>& names) {
  jclass stringClass = env_->FindClass("java/lang/String");
  jobjectArray array = env_->NewObjectArray(static_cast<jsize>(names.size()), stringClass, nullptr);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const zljLocalReferenceFrame frame(env_, 1);
    env_->SetObjectArrayElement(array, static_cast<jsize>(i), str(names[i]));
  }
  return array;
}

std::string JvmTest::text(jobject string) {
  if (!string) return "null";
  const char* bytes = env_->GetStringUTFChars(static_cast<jstring>(string), nullptr);
  std::string result(bytes);
  env_->ReleaseStringUTFChars(static_cast<jstring>(string), bytes);
  return result;
}

std::vector<std::string> JvmTest::texts(jobjectArray strings) {
  std::vector<std::string> result;
  const jsize length = strings ? env_->GetArrayLength(strings) : 0;
  for (jsize i = 0; i < length; ++i) {
    const zljLocalReferenceFrame frame(env_, 1);
    result.push_back(text(env_->GetObjectArrayElement(strings, i)));
  }
  return result;
}

std::string JvmTest::show(jobject object) {
  return object ? text(call(object, "toString", "()Ljava/lang/String;")) : "null";
}

std::string JvmTest::className(jobject object) {
  if (!object) return "null";
  return text(call(env_->GetObjectClass(object), "getName", "()Ljava/lang/String;"));
}

jobject JvmTest::make(const char* className, const char* constructorSignature, ...) {
  jclass cls = env_->FindClass(className);
  if (!cls) return nullptr;
  jmethodID constructor = env_->GetMethodID(cls, "<init>", constructorSignature);
  va_list arguments;
  va_start(arguments, constructorSignature);
  jobject made = env_->NewObjectV(cls, constructor, arguments);
  va_end(arguments);
  EXPECT_FALSE(env_->ExceptionCheck());
  return made;
}

jobject JvmTest::call(jobject object, const char* method, const char* signature) {
  jmethodID id = env_->GetMethodID(env_->GetObjectClass(object), method, signature);
  if (!id) return nullptr;
  jobject result = env_->CallObjectMethod(object, id);
  return env_->ExceptionCheck() ? nullptr : result;
}

}  // namespace test
