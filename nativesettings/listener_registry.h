// The registries of Java listeners: which listener object is subscribed to which entry. One
// registry per kind of event. Threads: any.
//
// A registry shares the listener's reference and the subscription; it does not keep the entry
// alive. Erasing a subscription ends it and releases the two global references of its callback.
// Keys of nodes that have died stay until the process ends; comparing a key with one throws
// boost::bad_weak_ptr out of the lookup and leaves the registry as it was.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <utility>

#include "base/concurrent_map.h"
#include "service/event_mgr.h"
#include "service/settings.h"

namespace nativesettings {

using ListenerKey =
    std::pair<boost::shared_ptr<jobject>, boost::weak_ptr<zlutil::settings::Settings>>;
using ListenerSubscription = boost::shared_ptr<zlutil::eventmgr::ScopedConnection>;

}  // namespace nativesettings

namespace zlutil {
namespace threadutil {

// References to Java objects: hashed by the object's identity hash code, and equal if they refer to
// the same object, so a lookup with a local reference finds a global one.
template <>
struct Hash<boost::shared_ptr<jobject>> {
  static std::size_t hash(const boost::shared_ptr<jobject>& reference);
  static bool equal(const boost::shared_ptr<jobject>& a, const boost::shared_ptr<jobject>& b);
};

// All keys of one listener have the same hash; two are equal if listener and node are.
template <>
struct Hash<nativesettings::ListenerKey> {
  static std::size_t hash(const nativesettings::ListenerKey& key);
  static bool equal(const nativesettings::ListenerKey& a, const nativesettings::ListenerKey& b);
};

}  // namespace threadutil
}  // namespace zlutil

namespace nativesettings {

using ListenerRegistry = zlutil::threadutil::ConcurrentTBBHashMap<
    zlutil::threadutil::ConcurrentMap<ListenerKey, ListenerSubscription>>;

extern ListenerRegistry& valueChangeListeners;
extern ListenerRegistry& addNodeListeners;
extern ListenerRegistry& removeNodeListeners;

// Forgets the identifiers that hashing has looked up; a step of unloading.
void forgetIdentityHash();

}  // namespace nativesettings
