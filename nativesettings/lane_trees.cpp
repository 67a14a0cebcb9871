#include "nativesettings/lane_trees.h"

#include <stdexcept>
#include <string>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "nativesettings/frame.h"
#include "nativesettings/handles.h"
#include "nativesettings/native_row.h"
#include "nativesettings/paths.h"
#include "service/application.h"
#include "service/settings_file.h"
#include "service/synchronization.h"
#include "service/testing.h"

namespace nativesettings {
namespace {

using zlutil::settings::ApplicationSources;
using zlutil::settings::Settings;
using zlutil::settings::SettingsFile;

// Runs an operation that the host may lack. Returns null, or the reason why it was not done; null
// also if the JVM is going down.
template <class Operation>
jstring reasonAgainst(JNIEnv* env, bool isThere, const Operation& operation) {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return nullptr;
  std::string reason = "the settings service has no such operation";
  try {
    try {
      if (isThere) return operation(), nullptr;
    } catch (const std::exception& failure) {
      reason = failure.what();
    }
    return jzi::ToJava::javaString(env, reason);
  } catch (const std::exception&) {
    return nullptr;  // without memory for the text: Java's own error is pending
  }
}

jstring synchronize(JNIEnv* env, jclass, jlong root) {
  return reasonAgainst(env, &zlutil::settings::synchronize,
                       [&] { zlutil::settings::synchronize(getRootFromJava(root)); });
}

jstring save(JNIEnv* env, jclass, jlong root, jobjectArray path, jobjectArray levels,
             jstring file) {
  return reasonAgainst(env, &SettingsFile::write, [&] {
    const auto top = getNodeFromJava(env, root, path, false);
    SettingsFile::write(top, getPathFromJava(env, levels, nullptr), zljGetUstring(env, file));
  });
}

jstring keepInMemory(JNIEnv* env, jclass) {
  return reasonAgainst(env, &zlutil::settings::keepSettingsInMemory, [] {
    if (!zlutil::settings::keepSettingsInMemory()) {
      throw std::logic_error("settings of the process have been read already");
    }
  });
}

// An element of a Java array, released at the end of the scope.
class Element {
 public:
  Element(JNIEnv* env, jobjectArray array, jsize index)
      : env_(env), object_(env->GetObjectArrayElement(array, index)) {}
  ~Element() { env_->DeleteLocalRef(object_); }
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;

  base::ustring units() const {
    return object_ ? zljGetUstring(env_, static_cast<jstring>(object_)) : base::ustring();
  }
  std::string text() const { return base::narrowFromUstring(units()); }
  bool isNull() const { return !object_; }
  std::string bytes() const {
    const auto array = static_cast<jbyteArray>(object_);
    std::string bytes(static_cast<std::size_t>(env_->GetArrayLength(array)), '\0');
    env_->GetByteArrayRegion(array, 0, static_cast<jsize>(bytes.size()),
                             reinterpret_cast<jbyte*>(bytes.data()));
    return bytes;
  }

 private:
  JNIEnv* const env_;
  const jobject object_;
};

// `sources` has the name, and the directories of the user and of the workgroup, the cluster and the
// directory of the factory, or null. Each of `files` is a file's name, with its content or null in
// `contents`.
ApplicationSources sourcesFromJava(JNIEnv* env, jobjectArray sources, jobjectArray files,
                                   jobjectArray contents) {
  ApplicationSources result;
  result.name = Element(env, sources, 0).text();
  result.userDirectory = Element(env, sources, 1).units();
  result.workgroupDirectory = Element(env, sources, 2).units();
  result.workgroupCluster = Element(env, sources, 3).text();
  result.factoryDirectory = Element(env, sources, 4).units();
  for (jsize i = 0; i < env->GetArrayLength(files); ++i) {
    const Element file(env, files, i), content(env, contents, i);
    ApplicationSources::File& added = result.factoryFiles.emplace_back();
    if (content.isNull()) {
      added.path = file.units();
    } else {
      added.name = file.text();
      added.content = content.bytes();
    }
  }
  return result;
}

jstring openApplication(JNIEnv* env, jclass, jobjectArray sources, jobjectArray files,
                        jobjectArray contents, jlongArray handle) {
  return reasonAgainst(env, &zlutil::settings::openApplication, [&] {
    const jlong opened = newHandle(
        zlutil::settings::openApplication(sourcesFromJava(env, sources, files, contents)));
    env->SetLongArrayRegion(handle, 0, 1, &opened);
  });
}

jstring overrideEnvironment(JNIEnv* env, jclass, jstring variable, jstring value) {
  return reasonAgainst(env, &zlutil::settings::overrideEnvironment, [&] {
    zlutil::settings::overrideEnvironment(zljGetStdString(env, variable),
                                          zljGetStdString(env, value));
  });
}

}  // namespace

#define STR "Ljava/lang/String;"

const std::array<JNINativeMethod, 5>& laneTreeMethods() {
  static const std::array<JNINativeMethod, 5> methods = {
      nativeRow("synchronize", "(J)" STR, &synchronize),
      nativeRow("save", "(J[" STR "[" STR STR ")" STR, &save),
      nativeRow("keepInMemory", "()" STR, &keepInMemory),
      nativeRow("openApplication", "([" STR "[" STR "[[B[J)" STR, &openApplication),
      nativeRow("overrideEnvironment", "(" STR STR ")" STR, &overrideEnvironment),
  };
  return methods;
}

#undef STR

}  // namespace nativesettings
