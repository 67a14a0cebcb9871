// Resolution of classes, methods and constructors for records and bare slots.
#include <cstdarg>
#include <stdexcept>
#include <string>

#include "base/mutex.h"
#include "bridge/java_layer.h"
#include "host/javalayer/class_loader.h"
#include "host/javalayer/class_places.h"
#include "host/javalayer/vm.h"

namespace jzi {
namespace {

// Guards the record sets that callers hand in; taken only when a record is first resolved.
base::Mutex recordsMutex;

void remember(std::set<ConsInfo*>& records, ConsInfo& record) {
  if (record.isCopy()) return;
  base::MutexLock lock(recordsMutex);
  records.insert(&record);
}

}  // namespace

jclass getClass(JNIEnv* env, ConsInfo& record) {
  jclass known = record.resolvedClass();
  // Not remembered in the record: outside the set, nothing would make the record forget it.
  return known ? known : record.place().find(env);
}

jclass safeFindClass(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo& record) {
  if (jclass known = record.resolvedClass()) return known;
  jclass found = record.place().find(env);
  record.rememberClass(found);
  remember(records, record);
  return found;
}

jclass safeFindClass(JNIEnv* env, std::atomic<jclass>& slot, const char* className) {
  if (jclass known = slot.load(std::memory_order_acquire)) return known;
  jclass local = javalayer::findClass(env, className);
  auto weak = static_cast<jclass>(env->NewWeakGlobalRef(local));
  env->DeleteLocalRef(local);
  // Without memory for the reference the class is as good as missing.
  if (!weak) throw std::runtime_error(std::string("java class not found: ") + className);
  jclass expected = nullptr;
  // Of two threads that resolve at once one wins; the other's reference is released.
  if (slot.compare_exchange_strong(expected, weak, std::memory_order_acq_rel)) return weak;
  env->DeleteWeakGlobalRef(weak);
  return expected;
}

void releaseClass(JNIEnv* env, std::atomic<jclass>& slot) {
  jclass held = slot.exchange(nullptr);
  if (held && env) env->DeleteWeakGlobalRef(held);
}

jmethodID safeGetMethodID(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo& record,
                          std::atomic<jmethodID>& slot, const char* name, const char* signature,
                          bool isStatic) {
  if (jmethodID known = slot.load(std::memory_order_acquire)) return known;
  safeFindClass(env, records, record);
  jmethodID found = record.place().findMethod(env, name, signature, isStatic);
  slot.store(found, std::memory_order_release);
  return found;
}

jmethodID safeGetMethodID(JNIEnv* env, jclass cls, std::atomic<jmethodID>& slot, const char* name,
                          const char* signature) {
  if (jmethodID known = slot.load(std::memory_order_acquire)) return known;
  jmethodID found = env->GetMethodID(cls, name, signature);
  slot.store(found, std::memory_order_release);
  return found;
}

jobject construct(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo* record, ...) {
  jclass cls = safeFindClass(env, records, *record);
  jmethodID constructor = record->constructorID();
  if (!constructor) {
    constructor = record->place().findMethod(env, "<init>", record->constructorSignature(), false);
    if (!constructor) throw std::runtime_error("java method not found: <init>");
    record->rememberConstructor(constructor);
  }
  va_list arguments;
  va_start(arguments, record);
  jobject made = env->NewObjectV(cls, constructor, arguments);
  va_end(arguments);
  return made;
}

void clearConstructors(std::set<ConsInfo*>& records) {
  JNIEnv* env = javalayer::currentEnv();
  {
    base::MutexLock lock(recordsMutex);
    for (ConsInfo* record : records) record->reset();
    records.clear();
  }
  detail::releaseAllPlaces(env);
  javalayer::forgetLoader(env);
}

void detail::safeRefDelete(void (JNIEnv::*release)(jobject), jobject reference) {
  if (!reference) return;
  const JavaGuard guard;
  if (JNIEnv* env = guard.env()) (env->*release)(reference);
}

}  // namespace jzi
