#include "host/javalayer/class_cache.h"

#include <cstring>

#include "bridge/class_slot.h"
#include "bridge/java_layer.h"
#include "host/javalayer/bridges.h"

namespace jzi {
namespace detail {

jclass ClassCache::find(JNIEnv* env) { return bridge.loader().resolve(env, cls, name.c_str()); }

jmethodID ClassCache::findMethod(JNIEnv* env, const char* methodName, const char* signature,
                                 bool isStatic) {
  CachedMethod* head = methods.load(std::memory_order_acquire);
  for (CachedMethod* method = head; method; method = method->next) {
    if (method->isStatic == isStatic && std::strcmp(method->name.c_str(), methodName) == 0 &&
        std::strcmp(method->signature.c_str(), signature) == 0) {
      return method->id;
    }
  }
  jclass owner = find(env);
  jmethodID id = isStatic ? env->GetStaticMethodID(owner, methodName, signature)
                          : env->GetMethodID(owner, methodName, signature);
  if (!id) return nullptr;
  // Two threads may both add the method: the identifiers are equal, and the second entry is never
  // found.
  auto* entry = new CachedMethod{methodName, signature, isStatic, id, head};
  while (!methods.compare_exchange_weak(entry->next, entry, std::memory_order_acq_rel)) {
  }
  return id;
}

void ClassCache::release(JNIEnv* env) {
  releaseClass(env, cls);
  for (CachedMethod* method = methods.exchange(nullptr); method;) {
    CachedMethod* next = method->next;
    delete method;
    method = next;
  }
}

}  // namespace detail

ConsInfo::ConsInfo(const ConsInfo& other)
    : className_(other.className_),
      constructorSignature_(other.constructorSignature_),
      cache_(&other.place()),
      isCopy_(true) {}

ConsInfo::~ConsInfo() = default;

void ConsInfo::reset() {
  class_.store(nullptr, std::memory_order_release);
  constructor_.store(nullptr, std::memory_order_release);
}

detail::ClassCache& ConsInfo::place() const {
  detail::ClassCache* known = cache_.load(std::memory_order_acquire);
  if (!known) {
    known = &javalayer::bridgeOf(this).cacheOf(className_);
    cache_.store(known, std::memory_order_release);
  }
  return *known;
}

}  // namespace jzi
