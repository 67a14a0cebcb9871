#include "nativesettings/paths.h"

#include <algorithm>
#include <boost/numeric/conversion/cast.hpp>

#include "bridge/converters.h"
#include "nativesettings/handles.h"
#include "service/settings.h"
#include "values/exchange.h"
#include "values/java_helpers.h"

namespace nativesettings {

using zlutil::settings::Settings;

std::vector<std::string> getPathFromJava(JNIEnv* env, jobjectArray path, jstring key) {
  GivenArguments given(env, path, key, nullptr);
  if (key) given.path.push_back(std::move(given.key));
  return std::move(given.path);
}

boost::shared_ptr<Settings> getEntry(jlong handle, const std::vector<std::string>& path,
                                     bool wantKey) {
  boost::shared_ptr<Settings> entry = getRootFromJava(handle)->findDescendant(path);
  if (entry && entry->isKey() != wantKey) entry.reset();
  return entry;
}

boost::shared_ptr<Settings> getNodeFromJava(JNIEnv* env, jlong handle, jobjectArray path,
                                            bool wantKey) {
  return getEntry(handle, getPathFromJava(env, path, nullptr), wantKey);
}

std::string& getDotPath(std::string& accumulated, const std::string& name) {
  if (name.empty()) return accumulated;
  accumulated.reserve(accumulated.size() + name.size() + 2);
  if (!accumulated.empty()) accumulated += '.';
  return accumulated += name;
}

std::string getDotPath(const std::vector<std::string>& names) {
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

std::vector<std::string> getSettingPath(const Settings& node) {
  std::vector<std::string> names;
  boost::shared_ptr<const Settings> held;
  const Settings* current = &node;
  while (boost::shared_ptr<const Settings> parent = current->getParent()) {
    names.push_back(current->getName());
    held = std::move(parent);
    current = held.get();
  }
  std::reverse(names.begin(), names.end());
  return names;
}

jobjectArray getSettingPathAsJArray(JNIEnv* env, const boost::shared_ptr<const Settings>& node) {
  const std::vector<std::string> names = getSettingPath(*node);
  return getNamesAsJArray(env, getDotPath(names), names.size());
}

jobjectArray getNamesAsJArray(JNIEnv* env, const std::string& dotted, std::size_t count) {
  const jint names = boost::numeric_cast<jint>(count);
  jstring joined = jzi::ToJava::javaString(env, dotted);
  if (!joined) return nullptr;
  return static_cast<jobjectArray>(answers::names.object(env, joined, names));
}

}  // namespace nativesettings
