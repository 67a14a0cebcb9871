#include "nativesettings/registration.h"

#include "nativesettings/changing.h"
#include "nativesettings/handles.h"
#include "nativesettings/levels.h"
#include "nativesettings/listeners.h"
#include "nativesettings/native_row.h"
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

// clang-format off
const JNINativeMethod settingMethods[] = {
    nativeRow("nativeAddRemoveListener",        "(Ljava/lang/Object;J" PATH STR LISTENER ")V", &nativeAddRemoveListener),
    nativeRow("nativeGet",                      "(J" PATH STR STR ")" INFO,                    &nativeGet),
    nativeRow("nativeGetLevel",                 "(J" PATH STR ")" STR,                         &nativeGetLevel),
    nativeRow("nativeIsKeyNameValid",           "(" STR ")Z",                                  &nativeIsKeyNameValid),
    nativeRow("nativeIsSet",                    "(J" PATH STR STR ")Z",                        &nativeIsSet),
    nativeRow("nativeExists",                   "(J" PATH STR ")Z",                            &nativeExists),
    nativeRow("nativeSet",                      "(JJ" PATH STR INFO STR ")V",                  &nativeSet),
    nativeRow("nativeUnset",                    "(J" PATH STR STR ")V",                        &nativeUnset),
    nativeRow("nativeGetFactoryDir",            "(J)" STR,                                     &nativeGetFactoryDir),
};

const JNINativeMethod settingPathMethods[] = {
    nativeRow("nativeAddNode",                  "(J" PATH STR STR STR ")V",                    &nativeAddNode),
    nativeRow("nativeAddKey",                   "(J" PATH STR INFO STR STR STR ")V",           &nativeAddKey),
    nativeRow("nativeCopySubtree",              "(J" PATH "J" PATH STR ")V",                   &nativeCopySubtree),
    nativeRow("nativeDelete",                   "(J" PATH STR ")V",                            &nativeDelete),
    nativeRow("nativeGetZvmRoot",               "(J)J",                                        &nativeGetZvmRoot),
    nativeRow("nativeGetPtrTarget",             "(J)J",                                        &nativeGetPtrTarget),
    nativeRow("nativeIsChildNode",              "(J" PATH STR ")Z",                            &nativeIsChildNode),
    nativeRow("nativeLoadSettings",             "(" STR ")J",                                  &nativeLoadSettings),
    nativeRow("nativeReleasePtr",               "(J)V",                                        &nativeReleasePtr),
    nativeRow("nativeGetChildren",              "(J" PATH "I)" PATH,                           &nativeGetChildren),
};

const JNINativeMethod settingLevelMethods[] = {
    nativeRow("nativeGetSessionLevel",          "()" STR,                                      &nativeGetSessionLevel),
    nativeRow("nativeGetUserLevel",             "()" STR,                                      &nativeGetUserLevel),
    nativeRow("nativeGetFactoryLevel",          "()" STR,                                      &nativeGetFactoryLevel),
    nativeRow("nativeGetWorkgroupLevel",        "()" STR,                                      &nativeGetWorkgroupLevel),
    nativeRow("nativeGetDefaultLevel",          "()" STR,                                      &nativeGetDefaultLevel),
    nativeRow("nativeCompareLevels",            "(" STR STR ")I",                              &nativeCompareLevels),
};

const JNINativeMethod settingTransactionMethods[] = {
    nativeRow("nativeCreateTransactionContext", "()J",                                         &nativeCreateTransactionContext),
    nativeRow("nativeDeleteTransactionContext", "(J)V",                                        &nativeDeleteTransactionContext),
    nativeRow("nativeCommitTransaction",        "(J" STR ")Ljava/util/List;",                  &nativeCommitTransaction),
    nativeRow("nativeValidateTransaction",      "(J" STR ")Ljava/util/List;",                  &nativeValidateTransaction),
};

const JNINativeMethod settingTestEnvironmentMethods[] = {
    nativeRow("nativeSetEnv",                   "(" STR STR ")" STR,                           &nativeSetEnv),
    nativeRow("nativeUnsetEnv",                 "()V",                                         &nativeUnsetEnv),
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
