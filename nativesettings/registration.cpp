#include "nativesettings/registration.h"

#include "nativesettings/changing.h"
#include "nativesettings/handles.h"
#include "nativesettings/levels.h"
#include "nativesettings/listeners.h"
#include "nativesettings/reading.h"
#include "nativesettings/transactions.h"

namespace nativesettings {
namespace {

// Fragments of signatures.
#define PACKAGE "com/velonix/services/settings/"
#define STR "Ljava/lang/String;"
#define PATH "[" STR
#define INFO "L" PACKAGE "SettingInfo;"
#define LISTENER "L" PACKAGE "SettingListener;"

template <class Function>
constexpr JNINativeMethod row(const char* name, const char* signature, Function* function) {
  // JNI's struct predates const; it does not write to the texts.
  return {const_cast<char*>(name), const_cast<char*>(signature), reinterpret_cast<void*>(function)};
}

// clang-format off
const JNINativeMethod settingMethods[] = {
    row("nativeAddRemoveListener",        "(Ljava/lang/Object;J" PATH STR LISTENER ")V", &nativeAddRemoveListener),
    row("nativeGet",                      "(J" PATH STR STR ")" INFO,                    &nativeGet),
    row("nativeGetLevel",                 "(J" PATH STR ")" STR,                         &nativeGetLevel),
    row("nativeIsKeyNameValid",           "(" STR ")Z",                                  &nativeIsKeyNameValid),
    row("nativeIsSet",                    "(J" PATH STR STR ")Z",                        &nativeIsSet),
    row("nativeExists",                   "(J" PATH STR ")Z",                            &nativeExists),
    row("nativeSet",                      "(JJ" PATH STR INFO STR ")V",                  &nativeSet),
    row("nativeUnset",                    "(J" PATH STR STR ")V",                        &nativeUnset),
    row("nativeGetFactoryDir",            "(J)" STR,                                     &nativeGetFactoryDir),
};

const JNINativeMethod settingPathMethods[] = {
    row("nativeAddNode",                  "(J" PATH STR STR STR ")V",                    &nativeAddNode),
    row("nativeAddKey",                   "(J" PATH STR INFO STR STR STR ")V",           &nativeAddKey),
    row("nativeCopySubtree",              "(J" PATH "J" PATH STR ")V",                   &nativeCopySubtree),
    row("nativeDelete",                   "(J" PATH STR ")V",                            &nativeDelete),
    row("nativeGetZvmRoot",               "(J)J",                                        &nativeGetZvmRoot),
    row("nativeGetPtrTarget",             "(J)J",                                        &nativeGetPtrTarget),
    row("nativeIsChildNode",              "(J" PATH STR ")Z",                            &nativeIsChildNode),
    row("nativeLoadSettings",             "(" STR ")J",                                  &nativeLoadSettings),
    row("nativeReleasePtr",               "(J)V",                                        &nativeReleasePtr),
    row("nativeGetChildren",              "(J" PATH "I)" PATH,                           &nativeGetChildren),
};

const JNINativeMethod settingLevelMethods[] = {
    row("nativeGetSessionLevel",          "()" STR,                                      &nativeGetSessionLevel),
    row("nativeGetUserLevel",             "()" STR,                                      &nativeGetUserLevel),
    row("nativeGetFactoryLevel",          "()" STR,                                      &nativeGetFactoryLevel),
    row("nativeGetWorkgroupLevel",        "()" STR,                                      &nativeGetWorkgroupLevel),
    row("nativeGetDefaultLevel",          "()" STR,                                      &nativeGetDefaultLevel),
    row("nativeCompareLevels",            "(" STR STR ")I",                              &nativeCompareLevels),
};

const JNINativeMethod settingTransactionMethods[] = {
    row("nativeCreateTransactionContext", "()J",                                         &nativeCreateTransactionContext),
    row("nativeDeleteTransactionContext", "(J)V",                                        &nativeDeleteTransactionContext),
    row("nativeCommitTransaction",        "(J" STR ")Ljava/util/List;",                  &nativeCommitTransaction),
    row("nativeValidateTransaction",      "(J" STR ")Ljava/util/List;",                  &nativeValidateTransaction),
};

const JNINativeMethod settingTestEnvironmentMethods[] = {
    row("nativeSetEnv",                   "(" STR STR ")" STR,                           &nativeSetEnv),
    row("nativeUnsetEnv",                 "()V",                                         &nativeUnsetEnv),
};
// clang-format on

static_assert(std::size(settingMethods) + std::size(settingPathMethods) +
                      std::size(settingLevelMethods) + std::size(settingTransactionMethods) +
                      std::size(settingTestEnvironmentMethods) ==
                  31,
              "every native method of the Java API has one row");

template <std::size_t Count>
jzi::jziNatives_t natives(const char* className, const JNINativeMethod (&methods)[Count]) {
  return {className, Count, methods};
}

}  // namespace

const std::array<jzi::jziNatives_t, kRegisteredClasses>& registeredClasses() {
  static const std::array<jzi::jziNatives_t, kRegisteredClasses> classes = {
      natives(PACKAGE "Setting", settingMethods),
      natives(PACKAGE "SettingPath", settingPathMethods),
      natives(PACKAGE "SettingLevel$Helper", settingLevelMethods),
      natives(PACKAGE "SettingTransaction", settingTransactionMethods),
      natives(PACKAGE "SettingTestEnvironment", settingTestEnvironmentMethods),
  };
  return classes;
}

#undef PACKAGE
#undef STR
#undef PATH
#undef INFO
#undef LISTENER

}  // namespace nativesettings
