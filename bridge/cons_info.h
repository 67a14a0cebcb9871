// jzi::ConsInfo: a record that names a Java class and one of its constructors and caches what they
// were resolved to. Records are constant-initialised statics of the library that uses them. The
// Java layer (bridge/java_layer.h) fills them at first use.
//
// The cache fields need no lock: each is an atomic that is read with acquire and written once, with
// compare-and-swap or with a value that every thread would write. A jmethodID is the same for all
// threads; of two references to a class the loser's is released.
//
// A copy of a record is only a lookup key: it borrows the cache that the Java layer has for
// the class, is never entered into a record set, and owns no reference.
//
// Each bridge of a process has records of its own, and the Java layer tells by their addresses
// which class loader to use. So a record or a slot must be a static of the bridge or a copy of one.
#pragma once

#include <jni.h>

#include <atomic>

#include "base/export.h"

namespace jzi {

namespace detail {
struct ClassCache;
}  // namespace detail

class SETTINGS_HOST_API ConsInfo {
 public:
  // Borrows both texts, which must be static. The signature is null, or empty, for a record that
  // constructs nothing.
  constexpr ConsInfo(const char* className, const char* constructorSignature)
      : className_(className), constructorSignature_(constructorSignature) {}
  ConsInfo(const ConsInfo& other);
  ConsInfo& operator=(const ConsInfo&) = delete;

  // Forgets class and constructor; releases nothing (clearConstructors does).
  virtual void reset();
  virtual ~ConsInfo();

  const char* className() const { return className_; }
  const char* constructorSignature() const { return constructorSignature_; }
  bool isCopy() const { return isCopy_; }

  // Null until resolved.
  jclass resolvedClass() const { return class_.load(std::memory_order_acquire); }
  jmethodID constructorID() const { return constructor_.load(std::memory_order_acquire); }

  // For the Java layer. The class is borrowed from its cache, which place() returns.
  void rememberClass(jclass borrowed) { class_.store(borrowed, std::memory_order_release); }
  void rememberConstructor(jmethodID id) { constructor_.store(id, std::memory_order_release); }
  detail::ClassCache& place() const;

 private:
  const char* const className_;
  const char* const constructorSignature_;
  std::atomic<jclass> class_{nullptr};
  std::atomic<jmethodID> constructor_{nullptr};
  mutable std::atomic<detail::ClassCache*> cache_{nullptr};
  const bool isCopy_ = false;
};

}  // namespace jzi
