#include "values/java/class_records.h"

#include "base/never_destroyed.h"
#include "bridge/java_layer.h"

namespace nativesettings {

jzi::ConsInfo settingValidatorCons("com/velonix/services/settings/SettingValidator", nullptr);
std::atomic<jmethodID> settingValidator_validateID{nullptr};

ClassInfo boolClassInfo("java/lang/Boolean", "(Z)V");
ClassInfo byteClassInfo("java/lang/Byte", "(B)V");
ClassInfo shortClassInfo("java/lang/Short", "(S)V");
ClassInfo intClassInfo("java/lang/Integer", "(I)V");
ClassInfo longClassInfo("java/lang/Long", "(J)V");
ClassInfo ubyteClassInfo("com/velonix/util/types/UnsignedByte", "(B)V");
ClassInfo ushortClassInfo("com/velonix/util/types/UnsignedShort", "(S)V");
ClassInfo uintClassInfo("com/velonix/util/types/UnsignedInteger", "(I)V");
ClassInfo ulongClassInfo("com/velonix/util/types/UnsignedLong", "(J)V");
ClassInfo floatClassInfo("java/lang/Float", "(F)V");
ClassInfo doubleClassInfo("java/lang/Double", "(D)V");
ClassInfo stringClassInfo("java/lang/String", "(Ljava/lang/String;)V");

jzi::ConsInfo settingInfoClassCons("com/velonix/services/settings/SettingInfo",
                                   "(Ljava/lang/Class;)V");
jzi::ConsInfo settingInfoObjCons("com/velonix/services/settings/SettingInfo",
                                 "(Ljava/lang/Object;)V");
std::atomic<jmethodID> settingInfo_getValueID{nullptr};
std::atomic<jmethodID> settingInfo_getTypeID{nullptr};

namespace {

base::NeverDestroyed<std::set<jzi::ConsInfo*>> resolvedRecords;
std::atomic<jclass> stringClass{nullptr};

}  // namespace

std::set<jzi::ConsInfo*>& globalConsInfos = resolvedRecords.get();

jclass getStringClass(JNIEnv* env) {
  return jzi::safeFindClass(env, stringClass, "java/lang/String");
}

void rearmClassRecords(JNIEnv* env) {
  zlutil::boostany::forEachKind(
      [&](auto tag) { recordOf<typename decltype(tag)::type>().rearm(env); });
}

void nativesettings_utilsUnload() {
  JNIEnv* env = GetJNIEnvR();
  zlutil::boostany::forEachKind(
      [env](auto tag) { recordOf<typename decltype(tag)::type>().releaseArrayClass(env); });
  jzi::clearConstructors(globalConsInfos);
  settingValidator_validateID = nullptr;
  settingInfo_getValueID = nullptr;
  settingInfo_getTypeID = nullptr;
}

}  // namespace nativesettings
