// The JVM of a test process. Made at first use, with -Xcheck:jni and the class path of the build,
// and never destroyed; the bridge under test is loaded into it. A JNI warning in the JVM's messages
// fails the test that is running.
#pragma once

#include <gtest/gtest.h>
#include <jni.h>

#include <string>
#include <vector>

namespace test {

// The environment of the main thread.
JNIEnv* jvmEnv();
JavaVM* jvm();

// Returns the JNI warnings since the last call.
std::vector<std::string> takeJniWarnings();

// Ends the pending Java exception and returns its class name and message, "class: message" ("class"
// for a null message); "" if none is pending.
std::string takeException(JNIEnv* env);

// A test with a JVM. After each test no Java exception may be pending and -Xcheck:jni must have
// been silent. Local references of a test end with it.
class JvmTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  jstring str(const std::string& narrow);
  jobjectArray path(const std::vector<std::string>& names);
  std::string text(jobject string);
  std::vector<std::string> texts(jobjectArray strings);

  // Returns object.toString(), "null" for null.
  std::string show(jobject object);

  // Returns the name of the object's class, such as "java.lang.Integer".
  std::string className(jobject object);

  // Returns a new object, by JNI signature and varargs.
  jobject make(const char* className, const char* constructorSignature, ...);

  // Calls an instance method without arguments that returns an object.
  jobject call(jobject object, const char* method, const char* signature);

  JNIEnv* env_ = nullptr;
};

}  // namespace test
