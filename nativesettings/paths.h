// Setting paths from Java: a handle, a String[] of node names below the handle's node (null: that
// node itself) and, for a key, its name. Threads: any, with the environment of that thread.
#pragma once

#include <jni.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "service/settings_fwd.h"

namespace nativesettings {

// Returns the node names in order, followed by the key name unless it is null. A null element
// counts as "".
std::vector<std::string> getPathFromJava(JNIEnv* env, jobjectArray path, jstring key);

// Returns the entry at the path below the (borrowed) handle's node if it is a key or a node as
// wanted, null otherwise. No names mean the handle's own node, without a lookup. Throws the
// failures of the service's lookup.
boost::shared_ptr<zlutil::settings::Settings> getNodeFromJava(JNIEnv* env, jlong handle,
                                                              jobjectArray path, bool wantKey);

// Appends "." and the name to a dotted path, which it returns; an empty name is skipped.
std::string& getDotPath(std::string& accumulated, const std::string& name);

// Returns the names joined with "."; empty names are kept.
std::string getDotPath(std::vector<std::string> names);

// Returns the names of a call's path and key joined with ".", the text of every not-found message.
std::string getDotPathFromJava(JNIEnv* env, jobjectArray path, jstring key);

// Returns the names from just below the root down to the node as a new String[], a local reference;
// empty for a root; null with an exception pending if the JVM cannot make it. `node` must not be
// null.
jobjectArray getSettingPathAsJArray(
    JNIEnv* env, const boost::shared_ptr<const zlutil::settings::Settings>& node);

}  // namespace nativesettings
