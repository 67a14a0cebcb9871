#include "nativesettings/transactions.h"

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "bridge/java_method.h"
#include "nativesettings/frame.h"
#include "nativesettings/records.h"
#include "service/settings.h"

namespace nativesettings {

using zlutil::settings::Settings;
using zlutil::settings::SettingsProblems;

namespace {

constexpr jint kProblemFrame = 8;

jobject newArrayList(JNIEnv* env) {
  jclass cls = env->FindClass("java/util/ArrayList");
  jmethodID constructor = cls ? env->GetMethodID(cls, "<init>", "()V") : nullptr;
  return constructor ? env->NewObject(cls, constructor) : nullptr;
}

// Returns a list of one SettingValidity per problem. A problem whose object cannot be made is left
// out. Returns null, with the JVM's exception pending, if it cannot make the list.
jobject listOf(JNIEnv* env, const SettingsProblems& problems) {
  jobject list = newArrayList(env);
  if (!list) return nullptr;
  jclass cls = env->FindClass("com/velonix/services/settings/SettingValidity");
  jmethodID constructor =
      cls ? env->GetMethodID(cls, "<init>", "(Ljava/lang/String;Ljava/lang/String;)V") : nullptr;
  if (!constructor) return nullptr;
  jzi::CallJavaMethod<jboolean> add("add", "(Ljava/lang/Object;)Z", &JNIEnv::CallBooleanMethod);
  add.resolve(env, list);
  for (const auto& problem : problems) {
    const zljLocalReferenceFrame frame(env, kProblemFrame);
    jstring second = jzi::ToJava::javaString(env, problem.second);
    jstring first = second ? jzi::ToJava::javaString(env, problem.first) : nullptr;
    jobject validity = first ? env->NewObject(cls, constructor, first, second) : nullptr;
    if (validity) static_cast<void>(add(env, list, validity));  // an ArrayList always answers true
    if (env->ExceptionCheck()) env->ExceptionClear();
  }
  return list;
}

SettingContext& contextOf(jlong context) { return *reinterpret_cast<SettingContext*>(context); }

jobject commitOrValidate(JNIEnv* env, jlong context, bool commit, jstring level) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return nullptr;
  return contextOf(context).commitOrValidate(env, commit, zljGetStdString(env, level));
}

}  // namespace

SettingContext::~SettingContext() = default;

void SettingContext::record(std::string path, boost::any value) {
  changes_.emplace_back(std::move(path), std::move(value));
}

jobject SettingContext::commitOrValidate(JNIEnv* env, bool commit, const std::string& level) const {
  const boost::shared_ptr<Settings> root = Settings::getSettingsRoot(zlutil::contextmgr::AnyZcrID);
  if (!root) {
    throwJavaExceptionHelper(env, runtimeException, "cannot open settings root");
    return nullptr;
  }
  const SettingsProblems problems = commit
                                        ? root->multipleSet(changes_.begin(), changes_.end(), level)
                                        : root->multipleValidate(changes_.begin(), changes_.end());
  return problems.empty() ? nullptr : listOf(env, problems);
}

jlong nativeCreateTransactionContext(JNIEnv*, jclass) {
  return reinterpret_cast<jlong>(new SettingContext);
}

void nativeDeleteTransactionContext(JNIEnv*, jclass, jlong context) {
  delete reinterpret_cast<SettingContext*>(context);
}

jobject nativeCommitTransaction(JNIEnv* env, jclass, jlong context, jstring level) {
  return commitOrValidate(env, context, true, level);
}

jobject nativeValidateTransaction(JNIEnv* env, jclass, jlong context, jstring level) {
  return commitOrValidate(env, context, false, level);
}

}  // namespace nativesettings
