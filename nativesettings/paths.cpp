#include "nativesettings/paths.h"

#include <boost/numeric/conversion/cast.hpp>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/handles.h"
#include "service/settings.h"
#include "values/class_records.h"

namespace nativesettings {

using zlutil::settings::Settings;

namespace {

// A native method starts with room for 32 references; a path up to this long leaves enough of it.
constexpr jsize kShortPath = 8;
constexpr jint kOtherReferences = 32;

}  // namespace

std::vector<std::string> getPathFromJava(JNIEnv* env, jobjectArray path, jstring key) {
  const jsize length = path ? env->GetArrayLength(path) : 0;
  if (length > kShortPath) env->EnsureLocalCapacity(length + kOtherReferences);
  std::vector<std::string> names;
  names.reserve(boost::numeric_cast<std::size_t>(length) + (key ? 1 : 0) + 1);
  for (jsize i = 0; i < length; ++i) {
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

jobjectArray getSettingPathAsJArray(JNIEnv* env, const boost::shared_ptr<const Settings>& node) {
  std::vector<std::string> names;
  boost::shared_ptr<const Settings> current = node;
  while (boost::shared_ptr<const Settings> parent = current->getParent()) {
    names.push_back(current->getName());
    current = parent;
  }
  const jsize length = boost::numeric_cast<jsize>(names.size());
  jobjectArray array = env->NewObjectArray(length, getStringClass(env), nullptr);
  if (!array) return nullptr;
  for (jsize i = 0; i < length; ++i) {
    jstring name = jzi::ToJava::javaString(env, names[length - 1 - i]);
    if (!name) return nullptr;
    env->SetObjectArrayElement(array, i, name);
    env->DeleteLocalRef(name);
  }
  return array;
}

}  // namespace nativesettings
