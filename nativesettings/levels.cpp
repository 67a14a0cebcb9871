#include "nativesettings/levels.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/failures.h"
#include "nativesettings/records.h"
#include "service/console.h"

namespace nativesettings {
namespace {

constexpr const char* kFactoryDir = "SETTINGS_FACTORYDIR";
constexpr const char* kUserDir = "SETTINGS_USERDIR";

// Returns the value as the environment holds it, in standard UTF-8; nothing, with a Java exception
// pending, if the environment cannot hold it.
std::optional<std::string> forEnvironment(JNIEnv* env, const char* name, const std::string& value) {
  const std::optional<std::string> utf8 = base::utf8FromNarrow(value);
  if (utf8 && utf8->find('\0') == std::string::npos) return *utf8;
  const std::string message = std::string("Cannot set ") + name + " to \"" + value +
                              "\": the environment holds neither U+0000 nor half a surrogate pair. "
                              "Nothing was set.";
  throwJavaExceptionHelper(env, runtimeException, message.c_str());
  return std::nullopt;
}

}  // namespace

jstring nativeGetUserLevel(JNIEnv* env, jclass) { return jzi::ToJava::javaString(env, "user"); }

jstring nativeGetWorkgroupLevel(JNIEnv* env, jclass) {
  return jzi::ToJava::javaString(env, "workgroup");
}

jstring nativeGetFactoryLevel(JNIEnv* env, jclass) {
  return jzi::ToJava::javaString(env, "factory");
}

jstring nativeGetSessionLevel(JNIEnv* env, jclass) {
  return jzi::ToJava::javaString(env, "session");
}

jstring nativeGetDefaultLevel(JNIEnv* env, jclass) { return jzi::ToJava::javaString(env, "user"); }

jint nativeCompareLevels(JNIEnv* env, jclass, jstring first, jstring second) {
  const std::vector<std::string>& levels = allLevelNames();
  const auto p = std::find(levels.begin(), levels.end(), zljGetStdString(env, first));
  // From p on, not from the start: the reverse order is deliberately not distinguished from an
  // unknown name.
  const auto q = std::find(p, levels.end(), zljGetStdString(env, second));
  if (q == levels.end()) return -1;
  return q == p ? 0 : 1;
}

jstring nativeSetEnv(JNIEnv* env, jclass, jstring factoryDir, jstring userDir) {
  const jzi::JVMShutdownGuard guard;
  const std::string factory = zljGetStdString(env, factoryDir);
  const std::string user = zljGetStdString(env, userDir);
  const auto factoryVariable = forEnvironment(env, kFactoryDir, factory);
  if (!factoryVariable) return nullptr;
  const auto userVariable = forEnvironment(env, kUserDir, user);
  if (!userVariable) return nullptr;
  setenv(kFactoryDir, factoryVariable->c_str(), 1);
  setenv(kUserDir, userVariable->c_str(), 1);
  utPrintf("setenv Command %s.\n", factory.c_str());
  utPrintf("setenv Command %s.\n", user.c_str());
  const char* now = std::getenv(kFactoryDir);
  if (!now) return env->NewStringUTF("SETTINGS_FACTORYDIR is set to nothing");
  return env->NewStringUTF(base::narrowFromUtf8(now).value_or(factory).c_str());
}

void nativeUnsetEnv(JNIEnv*, jclass) {
  unsetenv(kFactoryDir);
  unsetenv(kUserDir);
}

}  // namespace nativesettings
