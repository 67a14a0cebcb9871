#include "nativesettings/lane.h"

#include <vector>

#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/lane_changes.h"
#include "nativesettings/lane_facts.h"
#include "nativesettings/lane_keys.h"
#include "nativesettings/lane_listeners.h"
#include "nativesettings/lane_problems.h"
#include "nativesettings/lane_texts.h"
#include "nativesettings/lane_trees.h"
#include "nativesettings/native_row.h"
#include "nativesettings/refusal_reason.h"
#include "service/change_counters.h"

namespace nativesettings {
namespace {

using zlutil::settings::ChangeCounters;

constexpr const char* kLaneClass = "com/velonix/services/settings/NativeLane";

jstring librariesVersion(JNIEnv* env, jclass) { return env->NewStringUTF(NATIVESETTINGS_VERSION); }

// Returns the memory of the service's change counters, which Java borrows for ever: the host is
// never unmapped. Null if the host has none.
jobject changeCounters(JNIEnv* env, jclass) {
  if (!&ChangeCounters::table) return nullptr;
  ChangeCounters::Table& table = ChangeCounters::table();
  return env->NewDirectByteBuffer(table.data(), sizeof(table));
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
      nativeRow("wasRefused", "()Z", &wasRefused),
      nativeRow("refusalReason", "()Ljava/lang/String;", &refusalReason),
      nativeRow("refusalIsOfStore", "()Z", &refusalIsOfStore),
  };
  methods.insert(methods.end(), laneKeyMethods().begin(), laneKeyMethods().end());
  methods.insert(methods.end(), laneListenerMethods().begin(), laneListenerMethods().end());
  methods.insert(methods.end(), laneChangeMethods().begin(), laneChangeMethods().end());
  methods.insert(methods.end(), laneFactMethods().begin(), laneFactMethods().end());
  methods.insert(methods.end(), laneTextMethods().begin(), laneTextMethods().end());
  methods.insert(methods.end(), laneTreeMethods().begin(), laneTreeMethods().end());
  methods.insert(methods.end(), laneProblemMethods().begin(), laneProblemMethods().end());
  static_cast<void>(jzi::registerNativesImpl(env, {kLaneClass, methods.size(), methods.data()}));
}

}  // namespace nativesettings
