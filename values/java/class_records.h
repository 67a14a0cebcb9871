// The static records of the Java classes that carry values, and the set of the records that have
// been resolved. Constant-initialised where the compiler can; usable from any thread
// (bridge/cons_info.h).
#pragma once

#include <jni.h>

#include <atomic>
#include <set>
#include <string>

#include "values/java/class_info.h"
#include "values/value_kinds.h"

namespace nativesettings {

// The boxed value classes.
extern ClassInfo boolClassInfo, byteClassInfo, shortClassInfo, intClassInfo, longClassInfo,
    ubyteClassInfo, ushortClassInfo, uintClassInfo, ulongClassInfo, floatClassInfo, doubleClassInfo,
    stringClassInfo;

// The SettingInfo that carries a value, or only a type, and its two getters.
extern jzi::ConsInfo settingInfoObjCons;
extern jzi::ConsInfo settingInfoClassCons;
extern std::atomic<jmethodID> settingInfo_getValueID;
extern std::atomic<jmethodID> settingInfo_getTypeID;

// The class whose static method runs Java validators, and that method.
extern jzi::ConsInfo settingValidatorCons;
extern std::atomic<jmethodID> settingValidator_validateID;

// The records whose class has been resolved.
extern std::set<jzi::ConsInfo*>& globalConsInfos;

// Returns the record of the class that carries a native type; for a vector, of its elements.
template <class Type>
ClassInfo& recordOf() {
  using Element = zlutil::boostany::ElementOf<Type>;
  if constexpr (std::is_same_v<Element, std::string>) return stringClassInfo;
  if constexpr (std::is_same_v<Element, bool>) return boolClassInfo;
  if constexpr (std::is_same_v<Element, signed char>) return byteClassInfo;
  if constexpr (std::is_same_v<Element, unsigned char>) return ubyteClassInfo;
  if constexpr (std::is_same_v<Element, short>) return shortClassInfo;
  if constexpr (std::is_same_v<Element, unsigned short>) return ushortClassInfo;
  if constexpr (std::is_same_v<Element, int>) return intClassInfo;
  if constexpr (std::is_same_v<Element, unsigned int>) return uintClassInfo;
  if constexpr (std::is_same_v<Element, long>) return longClassInfo;
  if constexpr (std::is_same_v<Element, unsigned long>) return ulongClassInfo;
  if constexpr (std::is_same_v<Element, float>) return floatClassInfo;
  if constexpr (std::is_same_v<Element, double>) return doubleClassInfo;
}

// Returns the class java.lang.String, resolved once and cached for the life of the process.
// Borrowed.
jclass getStringClass(JNIEnv* env);

// Makes the value classes resolvable again after an unload; a step of loading.
void rearmClassRecords(JNIEnv* env);

// Releases every resolved class and forgets every identifier; a step of unloading.
void nativesettings_utilsUnload();

}  // namespace nativesettings
