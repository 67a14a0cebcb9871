// The data of the Java layer for each bridge. A process has one host, and each class loader that
// loads the Java API has a bridge of its own: a library with its own records and slots. Their
// addresses tell the bridges apart, so that none ever gets a class of another.
#pragma once

#include <jni.h>

#include <map>
#include <memory>
#include <string_view>

#include "base/mutex.h"
#include "host/javalayer/class_cache.h"
#include "host/javalayer/class_loader.h"

namespace javalayer {

class Bridge {
 public:
  ClassLoader& loader() { return loader_; }

  // Returns the cache for the class of that name, made at first use. Any thread.
  jzi::detail::ClassCache& cacheOf(const char* className) EXCLUDES(mutex_);

  // Remembers the loader of `cls`, a class of the bridge. Drops everything resolved if the loader
  // is another one than before: a bridge was unmapped, and this one mapped to the same address.
  void adopt(JNIEnv* env, jclass cls) EXCLUDES(mutex_);

  // Drops everything resolved, and the loader. No other thread may use the bridge.
  void release(JNIEnv* env) EXCLUDES(mutex_);

 private:
  void releaseCaches(JNIEnv* env) EXCLUDES(mutex_);

  ClassLoader loader_;
  base::Mutex mutex_;
  std::map<std::string_view, std::unique_ptr<jzi::detail::ClassCache>> caches_ GUARDED_BY(mutex_);
};

// Returns the bridge of the record, slot or function at the address; all addresses outside of any
// library share one. Leaks the bridges and their caches on purpose: records have pointers to them,
// and a bridge that is mapped to the address of an earlier one reuses them. Any thread.
Bridge& bridgeOf(const void* address);

}  // namespace javalayer
