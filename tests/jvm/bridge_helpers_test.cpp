// Calling Java by description, converting boxes, sharing references, and resolving records.
#include <boost/numeric/conversion/cast.hpp>
#include <limits>
#include <thread>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "bridge/java_method.h"
#include "bridge/shared_object.h"
#include "tests/support/bridge_test.h"
#include "tests/support/patched_java.h"
#include "values/java/class_records.h"

namespace {

using namespace jzi;
using jzi::detail::makeSharedObject;
using test::PatchedJava;
using test::takeException;

template <class Function>
std::string messageOf(Function function) {
  try {
    function();
  } catch (const std::exception& e) {
    return e.what();
  }
  return "nothing thrown";
}

class BridgeHelpers : public test::BridgeTest {
 protected:
  template <class T>
  T fromJava(jobject object) {
    return ToCPP::detail::ConvertFromJavaObject<T>()(env_, object);
  }
  template <class T>
  jobject toJava(const T& value) {
    return ToJava::detail::ConvertToJavaObject<T>()(env_, value);
  }
};

TEST_F(BridgeHelpers, AMethodIsResolvedAtItsFirstCallAndChecksItsReceiver) {
  CallJavaMethod<int> intValue("intValue", "()I", &JNIEnv::CallIntMethod);
  EXPECT_EQ(intValue(env_, integer(5)), 5);
  EXPECT_EQ(intValue(env_, integer(6)), 6);
  EXPECT_THROW(intValue(env_, str("5")), std::bad_cast);
}

TEST_F(BridgeHelpers, AMissingMethodOrClassIsNamed) {
  EXPECT_EQ(messageOf([] { CallJavaMethod<int>("intValue", "()I", nullptr); }),
            "JavaMethod::callMethod cannot be NULL.");
  EXPECT_EQ(messageOf([&] {
              CallJavaMethod<int>("noSuch", "()I", &JNIEnv::CallIntMethod)(env_, integer(1));
            }),
            "java method not found: noSuch");
  EXPECT_NE(takeException(env_), "") << "the JVM's own exception stays pending";
  using Create = CreateJavaObject<jobject>;
  EXPECT_EQ(messageOf([] { Create(nullptr, "java/lang/Object", "()V", &JNIEnv::NewObject); }),
            "JavaMethod::env cannot be NULL.");
  EXPECT_EQ(messageOf([&] { Create(env_, "java/lang/Object", "()V", nullptr); }),
            "JavaMethod::callMethod cannot be NULL.");
  EXPECT_EQ(messageOf([&] { Create(env_, "no/Such", "()V", &JNIEnv::NewObject); }),
            "java class not found: no/Such");
  EXPECT_NE(takeException(env_), "");
  EXPECT_EQ(messageOf([&] { Create(env_, "java/lang/Integer", "(Z)V", &JNIEnv::NewObject); }),
            "java method not found: <init>");
  EXPECT_NE(takeException(env_), "");
}

TEST_F(BridgeHelpers, GenericConversionsWidenUnsignedTypes) {
  EXPECT_EQ(className(toJava<unsigned char>(255)), "java.lang.Short");
  EXPECT_EQ(className(toJava<unsigned short>(65535)), "java.lang.Integer");
  EXPECT_EQ(className(toJava<unsigned int>(4294967295u)), "java.lang.Long");
  EXPECT_EQ(show(toJava<unsigned long>(9223372036854775807ul)), "9223372036854775807");
  EXPECT_THROW(toJava<unsigned long>(9223372036854775808ul), boost::numeric::positive_overflow);
  EXPECT_EQ(fromJava<unsigned char>(toJava<unsigned char>(255)), 255);
  EXPECT_EQ(fromJava<unsigned short>(toJava<unsigned short>(65535)), 65535);
  EXPECT_EQ(fromJava<unsigned int>(toJava<unsigned int>(4294967295u)), 4294967295u);
  EXPECT_EQ(fromJava<unsigned long>(toJava<unsigned long>(7)), 7ul);
  EXPECT_THROW(fromJava<unsigned char>(toJava<short>(256)), boost::numeric::positive_overflow);
  EXPECT_THROW(fromJava<unsigned char>(toJava<short>(-1)), boost::numeric::negative_overflow);
  EXPECT_THROW(fromJava<unsigned short>(toJava<int>(-1)), boost::numeric::negative_overflow);
  EXPECT_THROW(fromJava<unsigned int>(toJava<long>(1L << 32)), boost::numeric::positive_overflow);
  EXPECT_THROW(fromJava<unsigned long>(toJava<long>(-1)), boost::numeric::negative_overflow);
}

TEST_F(BridgeHelpers, OtherGenericConversionsAreExact) {
  EXPECT_EQ(fromJava<signed char>(toJava<signed char>(-128)), -128);
  EXPECT_EQ(fromJava<short>(toJava<short>(-32768)), -32768);
  EXPECT_EQ(std::numeric_limits<int>::min(),
            fromJava<int>(toJava(std::numeric_limits<int>::min())));
  EXPECT_EQ(fromJava<float>(toJava(0.1f)), 0.1f);
  EXPECT_EQ(fromJava<double>(toJava(0.1)), 0.1);
  EXPECT_TRUE(fromJava<bool>(toJava(true)));
  EXPECT_EQ(fromJava<std::string>(toJava<std::string>("text")), "text");
  EXPECT_EQ(fromJava<std::string>(integer(12)), "12") << "any object, by its toString()";
}

TEST_F(BridgeHelpers, ASharedObjectIsReleasedByItsLastOwner) {
  const PatchedJava java(env_);
  auto shared = makeSharedObject(env_, str("x"), &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef);
  auto other = shared;
  EXPECT_EQ(java.calls().globals, 1);
  shared.reset();
  EXPECT_EQ(java.calls().globals, 1);
  other.reset();
  EXPECT_EQ(java.calls().globals, 0);
  EXPECT_EQ(java.calls().frames, 0);
}

TEST_F(BridgeHelpers, ASharedObjectMayBeReleasedByAThreadThatTheJvmDoesNotKnow) {
  auto shared = makeSharedObject(env_, str("x"), &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef);
  jobject reference = *shared;
  EXPECT_EQ(JNIGlobalRefType, env_->GetObjectRefType(reference));
  std::thread([owner = std::move(shared)]() mutable { owner.reset(); }).join();
}

TEST_F(BridgeHelpers, NullMakesNoReference) {
  const PatchedJava java(env_);
  EXPECT_FALSE(makeSharedObject(env_, nullptr, &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef));
  EXPECT_FALSE(
      makeSharedObject(nullptr, str("x"), &JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef));
  EXPECT_EQ(java.calls().globals, 0);
}

TEST_F(BridgeHelpers, TheArrayClassIsLookedUpOnce) {
  nativesettings::intClassInfo.getArrayClass(env_);
  const PatchedJava java(env_);
  jclass first = nativesettings::intClassInfo.getArrayClass(env_);
  jclass second = nativesettings::intClassInfo.getArrayClass(env_);
  EXPECT_NE(first, second) << "each a new local reference";
  EXPECT_TRUE(env_->IsSameObject(first, second));
  EXPECT_EQ(java.calls().lookups, 0);
}

TEST_F(BridgeHelpers, UnloadingReleasesAndLoadingResolvesAnew) {
  using nativesettings::globalConsInfos;
  // Releases everything resolved so far, so that references are counted from nothing.
  nativesettings::nativesettings_utilsUnload();
  EXPECT_TRUE(globalConsInfos.empty());
  EXPECT_EQ(nativesettings::doubleClassInfo.resolvedClass(), nullptr);
  const PatchedJava java(env_);
  jobject boxed = construct(env_, globalConsInfos, &nativesettings::doubleClassInfo, 2.5);
  EXPECT_EQ(show(boxed), "2.5");
  EXPECT_EQ(globalConsInfos.count(&nativesettings::doubleClassInfo), 1u);
  EXPECT_EQ(java.calls().weakGlobals, 1);
  EXPECT_EQ(java.calls().globals, 0);
  nativesettings::nativesettings_utilsUnload();
  EXPECT_TRUE(globalConsInfos.empty());
  EXPECT_EQ(nativesettings::doubleClassInfo.resolvedClass(), nullptr);
  EXPECT_EQ(java.calls().weakGlobals, 0);
}

TEST_F(BridgeHelpers, AfterAResetTheArrayClassIsNullUntilTheLibraryIsLoadedAnew) {
  nativesettings::ClassInfo record("java/lang/Double", "(D)V");
  EXPECT_NE(record.getArrayClass(env_), nullptr);
  record.rearm(env_);
  EXPECT_NE(record.getArrayClass(env_), nullptr);
  record.reset();
  EXPECT_EQ(record.getArrayClass(env_), nullptr);
}

TEST_F(BridgeHelpers, ACopyOfARecordOwnsNothing) {
  std::set<ConsInfo*> records;
  ConsInfo record("java/lang/Long", "(J)V");
  const PatchedJava java(env_);
  {
    ConsInfo copy(record);
    EXPECT_NE(safeFindClass(env_, records, copy), nullptr);
  }
  EXPECT_TRUE(records.empty());
  EXPECT_EQ(record.resolvedClass(), nullptr);
  ConsInfo again(record);
  const long lookups = java.calls().lookups;
  EXPECT_NE(safeFindClass(env_, records, again), nullptr);
  EXPECT_EQ(lookups, java.calls().lookups) << "the Java layer remembers the class";
}

TEST_F(BridgeHelpers, AMethodIsLookedUpOnceForAllSlots) {
  std::set<ConsInfo*> records;
  ConsInfo record("java/lang/Integer", nullptr);
  std::atomic<jmethodID> first{nullptr}, second{nullptr}, other{nullptr};
  const jmethodID found =
      safeGetMethodID(env_, records, record, first, "toString", "()Ljava/lang/String;", false);
  const PatchedJava java(env_);
  EXPECT_EQ(found, safeGetMethodID(env_, records, record, second, "toString",
                                   "()Ljava/lang/String;", false));
  EXPECT_EQ(java.calls().lookups, 0);
  EXPECT_NE(found, safeGetMethodID(env_, records, record, other, "toString",
                                   "(I)Ljava/lang/String;", true));
  clearConstructors(records);
}

TEST_F(BridgeHelpers, ALookupOutsideASetIsNotRemembered) {
  ConsInfo record("java/lang/Long", "(J)V");
  jclass found = getClass(env_, record);
  EXPECT_TRUE(env_->IsSameObject(env_->FindClass("java/lang/Long"), found));
  EXPECT_EQ(record.resolvedClass(), nullptr);
  std::atomic<jmethodID> slot{nullptr};
  EXPECT_EQ(env_->GetMethodID(found, "longValue", "()J"),
            safeGetMethodID(env_, found, slot, "longValue", "()J"));
  const PatchedJava java(env_);
  safeGetMethodID(env_, found, slot, "longValue", "()J");
  EXPECT_EQ(java.calls().lookups, 0);
  std::atomic<jmethodID> none{nullptr};
  EXPECT_EQ(safeGetMethodID(env_, found, none, "noSuch", "()J"), nullptr);
  EXPECT_NE(takeException(env_), "") << "the JVM's own exception stays pending";
}

TEST_F(BridgeHelpers, AMissingClassIsNamedAndLeavesTheJvmsException) {
  std::set<ConsInfo*> records;
  ConsInfo record("no/Such", "()V");
  EXPECT_EQ(messageOf([&] { safeFindClass(env_, records, record); }),
            "java class not found: no/Such");
  EXPECT_NE(takeException(env_), "");
  EXPECT_TRUE(records.empty());
}

TEST_F(BridgeHelpers, ThreadsThatResolveAtOnceAgreeAndLeakNothing) {
  for (int round = 0; round < 50; ++round) {
    std::set<ConsInfo*> records;
    ConsInfo record("java/lang/Double", "(D)V");
    nativesettings::nativesettings_utilsUnload();
    jclass found[4] = {};
    std::vector<std::thread> threads;
    for (jclass& slot : found) {
      threads.emplace_back([&] {
        const JavaGuard guard;
        slot = safeFindClass(guard.env(), records, record);
        construct(guard.env(), records, &record, 1.0);
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (jclass one : found) EXPECT_EQ(found[0], one);
    EXPECT_EQ(records.size(), 1u);
    clearConstructors(records);
    EXPECT_EQ(record.resolvedClass(), nullptr);
  }
}

TEST_F(BridgeHelpers, AMessageIsTakenFromThePendingException) {
  EXPECT_EQ(extractExceptionMessage(env_), "");
  env_->ThrowNew(env_->FindClass("java/lang/ArithmeticException"), "why");
  EXPECT_EQ(extractExceptionMessage(env_), "why");
  EXPECT_EQ(takeException(env_), "java.lang.ArithmeticException: why") << "it stays pending";
  env_->Throw(static_cast<jthrowable>(make("java/lang/ArithmeticException", "()V")));
  EXPECT_EQ(extractExceptionMessage(env_), "java.lang.ArithmeticException");
  takeException(env_);
  env_->Throw(static_cast<jthrowable>(make("SpeechlessException", "()V")));
  EXPECT_EQ(extractExceptionMessage(env_), "") << "both of its accounts throw";
  EXPECT_EQ(takeException(env_), "?") << "it stays pending";
}

TEST_F(BridgeHelpers, AGuardAttachesItsThreadOnceAndNests) {
  std::thread([] {
    EXPECT_EQ(GetJNIEnvR(), nullptr);
    {
      const JavaGuard outer;
      const JavaGuard inner;
      EXPECT_NE(outer.env(), nullptr);
      EXPECT_EQ(outer.env(), inner.env());
    }
    EXPECT_NE(GetJNIEnvR(), nullptr) << "attached until the thread ends";
  }).join();
}

}  // namespace
