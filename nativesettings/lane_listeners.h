// The lane's natives for listeners. One Java object receives the events for all Java listeners at
// one entry: it is subscribed once, and each event costs one call of its method
//
//   void deliver(int event, String[] path, String name, boolean isNode, boolean gone)
//
//   event   0 changed, 1 added, 2 removed
//   path    the parent's path; null if the event is about the listened-to key itself
//   name    the name of the event's entry; null like the path
//   isNode  whether that entry is a node
//   gone    whether the listened-to entry itself has left the tree
//
// Exceptions of deliver() are dropped. A subscription is a Java long: listen() gives it to Java,
// which owns it until unlisten().
#pragma once

#include <jni.h>

#include <array>

namespace nativesettings {

// The rows to register these natives with NativeLane.
const std::array<JNINativeMethod, 3>& laneListenerMethods();

}  // namespace nativesettings
