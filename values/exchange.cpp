#include "values/exchange.h"

#include <cstring>
#include <stdexcept>

#include "values/java_helpers.h"

namespace nativesettings {
namespace {

constexpr const char* kNotHandedOver = "java failed to hand over";

// What stands in a buffer before what is handed over: its address, and a number of Java's own.
constexpr std::size_t kHeader = 2 * sizeof(jlong);

// The address of the thread's buffer, noted in its first bytes, where Java looks for it.
jlong noteAddress(JNIEnv* env) {
  jobject buffer = exchange::buffer.object(env);
  if (!buffer) throw std::runtime_error(kNotHandedOver);
  void* memory = env->GetDirectBufferAddress(buffer);
  env->DeleteLocalRef(buffer);
  const auto address = reinterpret_cast<jlong>(memory);
  std::memcpy(memory, &address, sizeof(address));
  return address;
}

}  // namespace

ExchangeReader::ExchangeReader(JNIEnv* env, jlong address) {
  if (env->ExceptionCheck()) throw std::runtime_error(kNotHandedOver);
  if (address == 0) address = noteAddress(env);
  at_ = reinterpret_cast<const char*>(address) + kHeader;
}

template <class Number>
Number ExchangeReader::next() {
  Number number;
  std::memcpy(&number, at_, sizeof(number));
  at_ += sizeof(number);
  return number;
}

jint ExchangeReader::count() { return next<jint>(); }
jlong ExchangeReader::bits() { return next<jlong>(); }

std::string ExchangeReader::text() {
  const auto length = static_cast<std::size_t>(count());
  const char* begin = at_;
  at_ += length;
  return std::string(begin, length);
}

GivenArguments::GivenArguments(JNIEnv* env, jlong address) : rest(env, address) {
  const jint names = rest.count();
  path.reserve(static_cast<std::size_t>(names) + 1);  // a caller may append the key
  for (jint i = 0; i < names; ++i) path.push_back(rest.text());
  key = rest.text();
  level = rest.text();
}

GivenArguments::GivenArguments(JNIEnv* env, jobjectArray javaPath, jstring javaKey,
                               jstring javaLevel)
    : GivenArguments(env, exchange::arguments.number(env, javaPath, javaKey, javaLevel)) {}

GivenArguments::GivenArguments(JNIEnv* env, jobjectArray javaPath, jstring javaKey,
                               jstring javaLevel, jobject settingInfo)
    : GivenArguments(env, exchange::change.number(env, javaPath, javaKey, javaLevel, settingInfo)) {
}

}  // namespace nativesettings
