#include "nativesettings/lane_problems.h"

#include <atomic>
#include <string>
#include <vector>

#include "bridge/converters.h"
#include "nativesettings/frame.h"
#include "nativesettings/native_row.h"
#include "service/problems.h"
#include "values/java/class_records.h"
#include "values/java/object_array.h"

namespace nativesettings {
namespace {

using zlutil::settings::fetchProblems;
using zlutil::settings::noticedProblems;
using zlutil::settings::takeProblemsOver;

std::atomic<bool> isTaken{false};

// Returns the memory of the count, which Java borrows for ever: the host is never unmapped. Null if
// the host has none, or Java has it already.
jobject takeProblems(JNIEnv* env, jclass) {
  if (!&takeProblemsOver || isTaken.exchange(true)) return nullptr;
  auto* const count = const_cast<std::atomic<std::uint64_t>*>(&takeProblemsOver());
  return env->NewDirectByteBuffer(count, sizeof(*count));
}

// Returns the lines as Java strings; null if the JVM is going down or out of memory.
template <class Read>
jobjectArray javaLines(JNIEnv* env, const Read& read) noexcept {
  const NativeFrame frame(env);
  if (!frame.isOpen()) return nullptr;
  try {
    const std::vector<std::string> lines = read();
    return newObjectArray(env, lines.size(), getStringClass(env),
                          [&](std::size_t i) { return jzi::ToJava::javaString(env, lines[i]); });
  } catch (const std::exception&) {
    return nullptr;
  }
}

jobjectArray fetch(JNIEnv* env, jclass) {
  return javaLines(env, [] { return fetchProblems(); });
}

jobjectArray noticed(JNIEnv* env, jclass) {
  return javaLines(
      env, [] { return &noticedProblems ? noticedProblems() : std::vector<std::string>(); });
}

}  // namespace

const std::array<JNINativeMethod, 3>& laneProblemMethods() {
  static const std::array<JNINativeMethod, 3> methods = {
      nativeRow("takeProblems", "()Ljava/nio/ByteBuffer;", &takeProblems),
      nativeRow("fetchProblems", "()[Ljava/lang/String;", &fetch),
      nativeRow("noticedProblems", "()[Ljava/lang/String;", &noticed),
  };
  return methods;
}

void giveBackProblemsOfJava() {
  if (isTaken.exchange(false)) zlutil::settings::giveProblemsBack();
}

}  // namespace nativesettings
