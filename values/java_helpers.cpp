#include "values/java_helpers.h"

#include <cstdarg>
#include <stdexcept>
#include <string>

#include "bridge/java_layer.h"
#include "values/class_records.h"

namespace nativesettings {

#define PACKAGE "com/velonix/services/settings/"
#define STR "Ljava/lang/String;"
#define INFO "L" PACKAGE "SettingInfo;"
#define LISTENER "L" PACKAGE "SettingListener;"
#define EVENT "L" PACKAGE "DeliveredEvent;"

namespace {

jzi::ConsInfo exchangeCons(PACKAGE "Exchange", nullptr);
jzi::ConsInfo answersCons(PACKAGE "Answers", nullptr);
jzi::ConsInfo changeCountsCons(PACKAGE "ChangeCounts", nullptr);

}  // namespace

// clang-format off
JavaHelper exchange::buffer   (exchangeCons, "buffer",    "()Ljava/nio/ByteBuffer;");
JavaHelper exchange::arguments(exchangeCons, "arguments", "([" STR STR STR ")J");
JavaHelper exchange::change   (exchangeCons, "change",    "([" STR STR STR INFO ")J");
JavaHelper exchange::value    (exchangeCons, "value",     "(" INFO ")J");
JavaHelper exchange::write    (exchangeCons, "write",     "(Ljava/lang/Object;Ljava/lang/Class;)J");
JavaHelper answers::box       (answersCons,  "box",       "(IJ)Ljava/lang/Object;");
JavaHelper answers::boxAll    (answersCons,  "boxAll",    "(I[J)[Ljava/lang/Object;");
JavaHelper answers::info      (answersCons,  "info",      "(IJ)" INFO);
JavaHelper answers::infoOf    (answersCons,  "infoOf",    "(Ljava/lang/Object;)" INFO);
JavaHelper answers::infoOfAll (answersCons,  "infoOfAll", "(I[J)" INFO);
JavaHelper answers::names     (answersCons,  "names",     "(" STR "I)[" STR);
JavaHelper answers::deliver   (answersCons,  "deliver",
                               "(" LISTENER "Ljava/lang/Object;I" STR "IZ)" EVENT);
JavaHelper answers::deliverAgain(answersCons, "deliverAgain",
                               "(" LISTENER "Ljava/lang/Object;" EVENT ")V");
JavaHelper changeCounts::give (changeCountsCons, "give",  "(Ljava/nio/ByteBuffer;)V");
// clang-format on

#undef PACKAGE
#undef STR
#undef INFO
#undef LISTENER
#undef EVENT

JavaHelper::Target JavaHelper::resolve(JNIEnv* env) {
  const jclass cls = jzi::safeFindClass(env, globalConsInfos, owner_);
  const jmethodID id =
      jzi::safeGetMethodID(env, globalConsInfos, owner_, id_, name_, signature_, true);
  if (!id) throw std::runtime_error(std::string("java method not found: ") + name_);
  return {cls, id};
}

jobject JavaHelper::object(JNIEnv* env, ...) {
  const Target target = resolve(env);
  va_list arguments;
  va_start(arguments, env);
  jobject result = env->CallStaticObjectMethodV(target.cls, target.id, arguments);
  va_end(arguments);
  return env->ExceptionCheck() ? nullptr : result;
}

jlong JavaHelper::number(JNIEnv* env, ...) {
  const Target target = resolve(env);
  va_list arguments;
  va_start(arguments, env);
  const jlong result = env->CallStaticLongMethodV(target.cls, target.id, arguments);
  va_end(arguments);
  return result;
}

void JavaHelper::run(JNIEnv* env, ...) {
  const Target target = resolve(env);
  va_list arguments;
  va_start(arguments, env);
  env->CallStaticVoidMethodV(target.cls, target.id, arguments);
  va_end(arguments);
}

void forgetJavaHelpers() {
  for (JavaHelper* helper : {&exchange::buffer, &exchange::arguments, &exchange::change,
                             &exchange::value, &exchange::write, &answers::box, &answers::boxAll,
                             &answers::info, &answers::infoOf, &answers::infoOfAll, &answers::names,
                             &answers::deliver, &answers::deliverAgain, &changeCounts::give}) {
    helper->forget();
  }
}

}  // namespace nativesettings
