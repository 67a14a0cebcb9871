#include "nativesettings/lane.h"

#include <stdexcept>
#include <vector>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/handles.h"
#include "nativesettings/lane_facts.h"
#include "nativesettings/lane_keys.h"
#include "nativesettings/lane_listeners.h"
#include "nativesettings/native_row.h"
#include "nativesettings/paths.h"
#include "nativesettings/refusal_reason.h"
#include "service/change_counters.h"
#include "service/settings_file.h"
#include "service/synchronization.h"
#include "service/testing.h"

namespace nativesettings {
namespace {

using zlutil::settings::ChangeCounters;
using zlutil::settings::SettingsFile;

constexpr const char* kLaneClass = "com/velonix/services/settings/NativeLane";

jstring librariesVersion(JNIEnv* env, jclass) { return env->NewStringUTF(NATIVESETTINGS_VERSION); }

// Returns the memory of the service's change counters, which Java borrows for ever: the host is
// never unmapped. Null if the host has none.
jobject changeCounters(JNIEnv* env, jclass) {
  if (!&ChangeCounters::table) return nullptr;
  ChangeCounters::Table& table = ChangeCounters::table();
  return env->NewDirectByteBuffer(table.data(), sizeof(table));
}

// Runs an operation that the host may lack. Returns null, or the reason why it was not done; null
// also if the JVM is going down.
template <class Operation>
jstring reasonAgainst(JNIEnv* env, bool isThere, const Operation& operation) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return nullptr;
  std::string reason = "the settings service has no such operation";
  try {
    try {
      if (isThere) return operation(), nullptr;
    } catch (const std::exception& failure) {
      reason = failure.what();
    }
    return jzi::ToJava::javaString(env, reason);
  } catch (const std::exception&) {
    return nullptr;  // without memory for the text: Java's own error is pending
  }
}

jstring synchronize(JNIEnv* env, jclass, jlong root) {
  return reasonAgainst(env, &zlutil::settings::synchronize,
                       [&] { zlutil::settings::synchronize(getRootFromJava(root)); });
}

jstring save(JNIEnv* env, jclass, jlong root, jobjectArray path, jobjectArray levels,
             jstring file) {
  return reasonAgainst(env, &SettingsFile::write, [&] {
    const auto top = getNodeFromJava(env, root, path, false);
    SettingsFile::write(top, getPathFromJava(env, levels, nullptr), zljGetUstring(env, file));
  });
}

jstring keepInMemory(JNIEnv* env, jclass) {
  return reasonAgainst(env, &zlutil::settings::keepSettingsInMemory, [] {
    if (!zlutil::settings::keepSettingsInMemory()) {
      throw std::logic_error("settings of the process have been read already");
    }
  });
}

jboolean wasRefused(JNIEnv*, jclass) { return NativeFrame::wasRefused(); }

jstring refusalReason(JNIEnv* env, jclass) {
  const std::string* const reason = RefusalReason::current();
  return reason ? env->NewStringUTF(reason->c_str()) : nullptr;
}

jboolean refusalIsOfStore(JNIEnv*, jclass) { return RefusalReason::isOfStore(); }

}  // namespace

void registerLane(JNIEnv* env) {
  if (!env) return;
  jclass cls = env->FindClass(kLaneClass);
  if (!cls) return env->ExceptionClear();
  env->DeleteLocalRef(cls);
  std::vector<JNINativeMethod> methods = {
      nativeRow("librariesVersion", "()Ljava/lang/String;", &librariesVersion),
      nativeRow("changeCounters", "()Ljava/nio/ByteBuffer;", &changeCounters),
      nativeRow("synchronize", "(J)Ljava/lang/String;", &synchronize),
      nativeRow("save",
                "(J[Ljava/lang/String;[Ljava/lang/String;Ljava/lang/String;)Ljava/lang/String;",
                &save),
      nativeRow("keepInMemory", "()Ljava/lang/String;", &keepInMemory),
      nativeRow("wasRefused", "()Z", &wasRefused),
      nativeRow("refusalReason", "()Ljava/lang/String;", &refusalReason),
      nativeRow("refusalIsOfStore", "()Z", &refusalIsOfStore),
  };
  methods.insert(methods.end(), laneKeyMethods().begin(), laneKeyMethods().end());
  methods.insert(methods.end(), laneListenerMethods().begin(), laneListenerMethods().end());
  methods.insert(methods.end(), laneFactMethods().begin(), laneFactMethods().end());
  static_cast<void>(jzi::registerNativesImpl(env, {kLaneClass, methods.size(), methods.data()}));
}

}  // namespace nativesettings
