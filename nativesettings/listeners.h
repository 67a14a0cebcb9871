// Registration of Java listeners on settings entries.
//
// Events are delivered on the thread that published them, with an environment of their own, and
// delivery never touches the registries. Exceptions of a listener are dropped.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>

#include "service/settings_fwd.h"

namespace nativesettings {

// Subscribes the listener to the three kinds of event of the entry; each event that it receives has
// `source`. Both objects stay referenced until the subscription ends. Does nothing for a null
// listener. Adding a listener to the same entry again keeps the first registration.
void addListener(JNIEnv* env, jobject listener, jobject source,
                 const boost::shared_ptr<zlutil::settings::Settings>& node);

// Ends the subscriptions of addListener; does nothing if there are none.
void removeListener(JNIEnv* env, jobject listener,
                    const boost::shared_ptr<zlutil::settings::Settings>& node);

// Adds (`source` not null) or removes (`source` null) a listener on the node, or on its child
// `keyName` if that is not null. Reports a missing node with its path.
void nativeAddRemoveListener(JNIEnv* env, jclass, jobject source, jlong handle, jobjectArray path,
                             jstring keyName, jobject listener);

}  // namespace nativesettings
