// The registration table against the Java classes, both ways.
#include "nativesettings/registration.h"

#include <set>

#include "tests/support/jvm.h"

namespace {

constexpr jint kNativeModifier = 0x0100;
constexpr jint kStaticModifier = 0x0008;

class Registration : public test::JvmTest {
 protected:
  // Returns the name of each native method that the class declares; all must be static.
  std::multiset<std::string> declaredNatives(const char* className) {
    jclass cls = env_->FindClass(className);
    auto methods =
        static_cast<jobjectArray>(call(cls, "getDeclaredMethods", "()[Ljava/lang/reflect/Method;"));
    std::multiset<std::string> names;
    for (jsize i = 0; i < env_->GetArrayLength(methods); ++i) {
      jobject method = env_->GetObjectArrayElement(methods, i);
      jmethodID getModifiers =
          env_->GetMethodID(env_->GetObjectClass(method), "getModifiers", "()I");
      const jint modifiers = env_->CallIntMethod(method, getModifiers);
      if (!env_->ExceptionCheck() && (modifiers & kNativeModifier)) {
        const std::string name = text(call(method, "getName", "()Ljava/lang/String;"));
        EXPECT_TRUE(modifiers & kStaticModifier) << name;
        names.insert(name);
      }
    }
    return names;
  }
};

TEST_F(Registration, EveryRowIsDeclaredInJavaAndEveryNativeHasItsRow) {
  std::size_t rows = 0;
  for (const jzi::jziNatives_t& natives : nativesettings::registeredClasses()) {
    SCOPED_TRACE(natives.className);
    std::multiset<std::string> table;
    for (std::size_t i = 0; i < natives.count; ++i) {
      const JNINativeMethod& row = natives.methods[i];
      table.insert(row.name);
      EXPECT_NE(
          env_->GetStaticMethodID(env_->FindClass(natives.className), row.name, row.signature),
          nullptr)
          << row.name << " " << row.signature << " " << test::takeException(env_);
      ++rows;
    }
    EXPECT_EQ(declaredNatives(natives.className), table);
  }
  EXPECT_EQ(rows, 31u);
}

TEST_F(Registration, AClassThatCannotBeRegisteredLeavesNoExceptionForTheNext) {
  const JNINativeMethod method = {const_cast<char*>("noSuch"), const_cast<char*>("()V"),
                                  reinterpret_cast<void*>(&JNI_CreateJavaVM)};
  EXPECT_FALSE(jzi::registerNativesImpl(env_, {"no/Such", 1, &method}));
  EXPECT_FALSE(jzi::registerNativesImpl(env_, {"java/lang/Integer", 1, &method}));
  EXPECT_FALSE(env_->ExceptionCheck());
}

}  // namespace
