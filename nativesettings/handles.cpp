#include "nativesettings/handles.h"

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/records.h"
#include "nativesettings/zvm_context.h"
#include "service/settings.h"
#include "service/z_settings.h"

namespace nativesettings {

using zlutil::settings::kStandaloneRootName;
using zlutil::settings::Settings;
using zlutil::settings::ZSettings;

namespace {

using Holder = boost::shared_ptr<Settings>;

// Returns the root of a file, or of no file.
Holder loadRoot(const base::ustring* path) {
  if (path) return Settings::importAsStandaloneObject(*path);
  return ZSettings::createSettingsNode(kStandaloneRootName, false, true,
                                       zlutil::settings::ValidatorChoice());
}

}  // namespace

jlong newHandle(const boost::shared_ptr<Settings>& node) {
  return reinterpret_cast<jlong>(new Holder(node));
}

boost::shared_ptr<Settings> getRootFromJava(jlong handle) {
  return *reinterpret_cast<const Holder*>(handle);
}

jlong nativeGetPtrTarget(JNIEnv*, jclass, jlong handle) {
  return reinterpret_cast<jlong>(reinterpret_cast<const Holder*>(handle)->get());
}

void nativeReleasePtr(JNIEnv*, jclass, jlong handle) { delete reinterpret_cast<Holder*>(handle); }

jlong nativeGetZvmRoot(JNIEnv* env, jclass, jlong zvmHandle) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return 0;
  const Holder root = Settings::getSettingsRoot(nativezvm::getZcrForHandle(zvmHandle));
  if (root) return newHandle(root);
  throwJavaExceptionHelper(env, runtimeException, "cannot find root");
  return 0;
}

jlong nativeLoadSettings(JNIEnv* env, jclass, jstring fileName) {
  return guarded(
      env, jlong{0},
      [&]() -> jlong {
        const base::ustring path =
            fileName ? zljGetUstring(env, fileName) : base::to_ustring(kStandaloneRootName);
        if (const Holder root = loadRoot(fileName ? &path : nullptr)) return newHandle(root);
        const std::string message =
            "Failed to create settings tree for " + base::codecvt_ustring_to_string(path, "UTF-8");
        throwJavaExceptionHelper(env, runtimeException, message.c_str());
        return 0;
      },
      FailureTranslator(env, nullptr, fileName, false));
}

jstring nativeGetFactoryDir(JNIEnv* env, jclass, jlong handle) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return nullptr;
  return jzi::ToJava::javaString(env,
                                 ZSettings::getFactoryDir(getRootFromJava(handle)->getZcrID()));
}

}  // namespace nativesettings
