#include "host/javalayer/class_places.h"

#include "bridge/class_slot.h"
#include "bridge/java_layer.h"
#include "host/javalayer/bridges.h"

namespace jzi {
namespace detail {

jclass ClassPlace::find(JNIEnv* env) { return bridge.loader().resolve(env, cls, name.c_str()); }

jmethodID ClassPlace::findMethod(JNIEnv* env, const char* methodName, const char* signature,
                                 bool isStatic) {
  MethodPlace* head = methods.load(std::memory_order_acquire);
  for (MethodPlace* method = head; method; method = method->next) {
    if (method->isStatic == isStatic && method->name == methodName &&
        method->signature == signature) {
      return method->id;
    }
  }
  jclass owner = find(env);
  jmethodID id = isStatic ? env->GetStaticMethodID(owner, methodName, signature)
                          : env->GetMethodID(owner, methodName, signature);
  if (!id) return nullptr;
  // Two threads may both enter the method; the identifiers are equal and the second entry is only
  // never found.
  auto* entry = new MethodPlace{methodName, signature, isStatic, id, head};
  while (!methods.compare_exchange_weak(entry->next, entry, std::memory_order_acq_rel)) {
  }
  return id;
}

void ClassPlace::release(JNIEnv* env) {
  releaseClass(env, cls);
  for (MethodPlace* method = methods.exchange(nullptr); method;) {
    MethodPlace* next = method->next;
    delete method;
    method = next;
  }
}

}  // namespace detail

ConsInfo::ConsInfo(const ConsInfo& other)
    : className_(other.className_),
      constructorSignature_(other.constructorSignature_),
      place_(&other.place()),
      isCopy_(true) {}

ConsInfo::~ConsInfo() = default;

void ConsInfo::reset() {
  class_.store(nullptr, std::memory_order_release);
  constructor_.store(nullptr, std::memory_order_release);
}

detail::ClassPlace& ConsInfo::place() const {
  detail::ClassPlace* known = place_.load(std::memory_order_acquire);
  if (!known) {
    known = &javalayer::bridgeOf(this).place(className_);
    place_.store(known, std::memory_order_release);
  }
  return *known;
}

}  // namespace jzi
