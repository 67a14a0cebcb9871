// Resolves classes, methods and constructors for records and bare slots.
#include <cstdarg>
#include <stdexcept>
#include <string>

#include "base/mutex.h"
#include "bridge/java_layer.h"
#include "host/javalayer/bridges.h"
#include "host/javalayer/class_cache.h"
#include "host/javalayer/vm.h"

namespace jzi {
namespace {

// Protects the record sets of the callers. Taken only when a record is first resolved.
base::Mutex recordsMutex;

void addTo(std::set<ConsInfo*>& records, ConsInfo& record) {
  if (record.isCopy()) return;
  base::MutexLock lock(recordsMutex);
  records.insert(&record);
}

}  // namespace

jclass getClass(JNIEnv* env, ConsInfo& record) {
  jclass known = record.resolvedClass();
  // The record does not remember it: clearConstructors() resets only the records of a set.
  return known ? known : record.place().find(env);
}

jclass safeFindClass(JNIEnv* env, std::set<ConsInfo*>& records, ConsInfo& record) {
  if (jclass known = record.resolvedClass()) return known;
  jclass found = record.place().find(env);
  record.rememberClass(found);
  addTo(records, record);
  return found;
}

jclass safeFindClass(JNIEnv* env, std::atomic<jclass>& slot, const char* className) {
  if (jclass known = slot.load(std::memory_order_acquire)) return known;
  return javalayer::bridgeOf(&slot).loader().resolve(env, slot, className);
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
  std::set<javalayer::Bridge*> bridges = {&javalayer::bridgeOf(&records)};
  {
    base::MutexLock lock(recordsMutex);
    for (ConsInfo* record : records) {
      bridges.insert(&record->place().bridge);
      record->reset();
    }
    records.clear();
  }
  for (javalayer::Bridge* bridge : bridges) bridge->release(javalayer::currentEnv());
}

void detail::safeRefDelete(void (JNIEnv::*release)(jobject), jobject reference) {
  if (!reference) return;
  const JavaGuard guard;
  if (JNIEnv* env = guard.env()) (env->*release)(reference);
}

}  // namespace jzi
