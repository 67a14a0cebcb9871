#include "nativesettings/paths.h"

#include <algorithm>
#include <boost/numeric/conversion/cast.hpp>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/handles.h"
#include "service/settings.h"
#include "values/java/class_records.h"
#include "values/java/local_frames.h"
#include "values/java/object_array.h"

namespace nativesettings {

using zlutil::settings::Settings;

namespace {

// A native method starts with room for some 30 local references; a path up to this length leaves
// enough of it.
constexpr jsize kShortPath = 8;

}  // namespace

std::vector<std::string> getPathFromJava(JNIEnv* env, jobjectArray path, jstring key) {
  const jsize length = path ? env->GetArrayLength(path) : 0;
  std::vector<std::string> names;
  names.reserve(boost::numeric_cast<std::size_t>(length) + (key ? 1 : 0) + 1);
  LocalFrames frames(env);
  for (jsize i = 0; i < length; ++i) {
    if (length > kShortPath) frames.step();
    names.emplace_back();
    zljGetStdString(names.back(), env, static_cast<jstring>(env->GetObjectArrayElement(path, i)));
  }
  if (key) {
    names.emplace_back();
    zljGetStdString(names.back(), env, key);
  }
  return names;
}

boost::shared_ptr<Settings> getNodeFromJava(JNIEnv* env, jlong handle, jobjectArray path,
                                            bool wantKey) {
  boost::shared_ptr<Settings> entry = getRootFromJava(handle);
  const std::vector<std::string> names = getPathFromJava(env, path, nullptr);
  if (!names.empty()) entry = entry->findDescendant(names);
  if (entry && entry->isKey() != wantKey) entry.reset();
  return entry;
}

std::string& getDotPath(std::string& accumulated, const std::string& name) {
  if (name.empty()) return accumulated;
  accumulated.reserve(accumulated.size() + name.size() + 2);
  if (!accumulated.empty()) accumulated += '.';
  return accumulated += name;
}

std::string getDotPath(std::vector<std::string> names) {
  std::string dotted;
  for (const std::string& name : names) {
    if (&name != &names.front()) dotted += '.';
    dotted += name;
  }
  return dotted;
}

std::string getDotPathFromJava(JNIEnv* env, jobjectArray path, jstring key) {
  return getDotPath(getPathFromJava(env, path, key));
}

jobjectArray getSettingPathAsJArray(JNIEnv* env, const boost::shared_ptr<const Settings>& node) {
  std::vector<std::string> names;
  boost::shared_ptr<const Settings> current = node;
  while (boost::shared_ptr<const Settings> parent = current->getParent()) {
    names.push_back(current->getName());
    current = parent;
  }
  std::reverse(names.begin(), names.end());
  return newObjectArray(env, names.size(), getStringClass(env),
                        [&](std::size_t i) { return jzi::ToJava::javaString(env, names[i]); });
}

}  // namespace nativesettings
