// What the Java layer keeps for each bridge. The host is there once in a process, and each class
// loader that loads the Java API has a bridge of its own, a library with its own records and slots:
// by their addresses the layer tells the bridges apart, so that none is ever given another's class.
#pragma once

#include <jni.h>

#include <map>
#include <memory>
#include <string_view>

#include "base/mutex.h"
#include "host/javalayer/class_loader.h"
#include "host/javalayer/class_places.h"

namespace javalayer {

class Bridge {
 public:
  ClassLoader& loader() { return loader_; }

  // The place for the class of that name, made at first use. Any thread.
  jzi::detail::ClassPlace& place(const char* className) EXCLUDES(mutex_);

  // Notes that `cls` is one of the bridge's classes. A loader that was not known before has no use
  // for what another one resolved, before whose bridge was unmapped from the same address.
  void adopt(JNIEnv* env, jclass cls) EXCLUDES(mutex_);

  // Drops everything resolved, and the loader. Only while no other thread uses the bridge.
  void release(JNIEnv* env) EXCLUDES(mutex_);

 private:
  void releasePlaces(JNIEnv* env) EXCLUDES(mutex_);

  ClassLoader loader_;
  base::Mutex mutex_;
  std::map<std::string_view, std::unique_ptr<jzi::detail::ClassPlace>> places_ GUARDED_BY(mutex_);
};

// The bridge that has the record, slot or function at that address; all that belong to no library
// share one. Leaked on purpose, with its places: records keep pointers to them, and a bridge that
// is mapped to the place of an earlier one takes them over. Any thread.
Bridge& bridgeOf(const void* address);

}  // namespace javalayer
