// The lane's natives for listeners. One Java object hears for all listeners at one place: it is
// subscribed once, and each event costs one call of its method
//
//   void deliver(int event, String[] path, String name, boolean isNode, boolean gone)
//
// with the number of the event (0 changed, 1 added, 2 removed), the path of the entry's parent and
// the entry's name (both null for a change of the very key that is listened to), whether the entry
// is a node, and whether the place itself has left the tree. What deliver() throws is dropped.
//
// A subscription is a Java long: listen() gives it to Java, which owns it until unlisten().
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// Rows for the registration of these natives with NativeLane.
const std::array<JNINativeMethod, 3>& laneListenerMethods();

}  // namespace nativesettings
