#include "host/javalayer/bridges.h"

#include "base/loaded_library.h"
#include "base/never_destroyed.h"

namespace javalayer {

using jzi::detail::ClassCache;

ClassCache& Bridge::cacheOf(const char* className) {
  base::MutexLock lock(mutex_);
  const auto found = caches_.find(className);
  if (found != caches_.end()) return *found->second;
  auto made = std::make_unique<ClassCache>(*this, className);
  const std::string_view key = made->name;
  return *caches_.emplace(key, std::move(made)).first->second;
}

void Bridge::adopt(JNIEnv* env, jclass cls) {
  if (!loader_.remember(env, cls)) releaseCaches(env);
}

void Bridge::release(JNIEnv* env) {
  releaseCaches(env);
  loader_.forget(env);
}

void Bridge::releaseCaches(JNIEnv* env) {
  base::MutexLock lock(mutex_);
  for (auto& entry : caches_) entry.second->release(env);
}

Bridge& bridgeOf(const void* address) {
  struct Bridges {
    base::Mutex mutex;
    std::map<const void*, std::unique_ptr<Bridge>> byLibrary GUARDED_BY(mutex);
  };
  static base::NeverDestroyed<Bridges> all;
  Bridges& bridges = all.get();
  const void* library = base::libraryOf(address);
  base::MutexLock lock(bridges.mutex);
  std::unique_ptr<Bridge>& bridge = bridges.byLibrary[library];
  if (!bridge) bridge = std::make_unique<Bridge>();
  return *bridge;
}

}  // namespace javalayer
