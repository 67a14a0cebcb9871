// Java listeners on settings entries: registration, and delivery of the service's events to them.
//
// Deliveries run on whatever thread published the event, with an environment of their own, and
// never touch the registries. An exception that a listener throws is dropped.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>

#include "service/settings_fwd.h"

namespace nativesettings {

// Subscribes the listener to the three kinds of event of the entry; `source` is handed to each
// event that it receives. Both objects stay referenced until the subscription ends. Nothing happens
// for a null listener; adding a listener to the same entry again keeps the first registration.
void addListener(JNIEnv* env, jobject listener, jobject source,
                 const boost::shared_ptr<zlutil::settings::Settings>& node);

// Ends what addListener began; nothing happens when there is no such registration.
void removeListener(JNIEnv* env, jobject listener,
                    const boost::shared_ptr<zlutil::settings::Settings>& node);

// Adds (`source` given) or removes (`source` null) a listener on the node, or on its child
// `keyName` when that is not null. A node that does not exist is reported with its path.
void nativeAddRemoveListener(JNIEnv* env, jclass, jobject source, jlong handle, jobjectArray path,
                             jstring keyName, jobject listener);

}  // namespace nativesettings
