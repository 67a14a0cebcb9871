// The best floor: all arguments in one call into Java, the whole answer in another.
#include <cstring>
#include <string_view>

#include "bench/bridge/bare_tree.h"

namespace bench {
namespace {

jclass helper;
jmethodID arguments, setArguments, infoOfInt, infoOfText, infoOfDoubles, deliver, split;

constexpr int kIntKind = 7;
constexpr int kTextKind = 1;
constexpr jint kDeliveryFrame = 8;

// What Java writes the arguments into; the buffer object is kept for the life of the thread.
struct Arguments {
  char bytes[4096];
  jobject buffer = nullptr;
  const char* at = bytes;

  jobject begin(JNIEnv* env) {
    if (!buffer) buffer = env->NewGlobalRef(env->NewDirectByteBuffer(bytes, sizeof(bytes)));
    at = bytes;
    return buffer;
  }

  std::string text() {
    const auto length = static_cast<unsigned char>(*at);
    std::string text(at + 1, length);
    at += 1 + length;
    return text;
  }
};
thread_local Arguments given;

// Reads what arguments() in Best.java wrote.
BareKey& readKey(jlong tree) {
  BareNode* node = &treeOf(tree);
  for (int nodes = *given.at++ - 1; nodes > 0; --nodes) node = node->nodes.at(given.text()).get();
  return *node->keys.at(given.text());
}

std::vector<double> doublesOf(JNIEnv* env, jobject object) {
  const auto array = static_cast<jdoubleArray>(object);
  std::vector<double> items(env->GetArrayLength(array));
  env->GetDoubleArrayRegion(array, 0, static_cast<jsize>(items.size()), items.data());
  return items;
}

boost::any readValue(JNIEnv* env, jobject object) {
  const int kind = *given.at++;
  if (kind == kIntKind) {
    // Big-endian, as the buffer has it from the start.
    std::uint32_t number;
    std::memcpy(&number, given.at, sizeof(number));
    return static_cast<int>(__builtin_bswap32(number));
  }
  if (kind != kTextKind) return doublesOf(env, object);
  char text[256] = {};
  const auto string = static_cast<jstring>(object);
  env->GetStringUTFRegion(string, 0, env->GetStringLength(string), text);
  return std::string(text);
}

}  // namespace

#define FLOOR(result, name) \
  extern "C" JNIEXPORT result JNICALL Java_com_velonix_services_settings_Best_##name

FLOOR(void, prepare)(JNIEnv* env, jclass cls) {
  helper = static_cast<jclass>(env->NewGlobalRef(cls));
  arguments = env->GetStaticMethodID(
      cls, "arguments",
      "(Ljava/nio/ByteBuffer;[Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)I");
  setArguments = env->GetStaticMethodID(
      cls, "setArguments",
      "(Ljava/nio/ByteBuffer;[Ljava/lang/String;Ljava/lang/String;"
      "Lcom/velonix/services/settings/SettingInfo;Ljava/lang/String;)Ljava/lang/Object;");
  infoOfInt =
      env->GetStaticMethodID(cls, "infoOf", "(I)Lcom/velonix/services/settings/SettingInfo;");
  infoOfText = env->GetStaticMethodID(
      cls, "infoOf", "(Ljava/lang/String;)Lcom/velonix/services/settings/SettingInfo;");
  infoOfDoubles =
      env->GetStaticMethodID(cls, "infoOf", "([D)Lcom/velonix/services/settings/SettingInfo;");
  deliver = env->GetStaticMethodID(cls, "deliver",
                                   "(Lcom/velonix/services/settings/SettingListener;"
                                   "Ljava/lang/Object;[Ljava/lang/String;Ljava/lang/String;)V");
  split = env->GetStaticMethodID(cls, "split", "(Ljava/lang/String;I)[Ljava/lang/String;");
}

FLOOR(jobject, get)
(JNIEnv* env, jclass, jlong tree, jobjectArray path, jstring key, jstring level) {
  env->CallStaticIntMethod(helper, arguments, given.begin(env), path, key, level);
  const BareKey& found = readKey(tree);
  const boost::any value = found.value(given.text());
  if (const int* number = boost::any_cast<int>(&value)) {
    return env->CallStaticObjectMethod(helper, infoOfInt, *number);
  }
  if (const auto* string = boost::any_cast<std::string>(&value)) {
    return env->CallStaticObjectMethod(helper, infoOfText, env->NewStringUTF(string->c_str()));
  }
  const auto& items = *boost::any_cast<std::vector<double>>(&value);
  const auto length = static_cast<jsize>(items.size());
  jdoubleArray array = env->NewDoubleArray(length);
  env->SetDoubleArrayRegion(array, 0, length, items.data());
  return env->CallStaticObjectMethod(helper, infoOfDoubles, array);
}

FLOOR(void, set)
(JNIEnv* env, jclass, jlong tree, jobjectArray path, jstring key, jobject info, jstring level) {
  jobject object =
      env->CallStaticObjectMethod(helper, setArguments, given.begin(env), path, key, info, level);
  BareKey& found = readKey(tree);
  const std::size_t index = BareKey::indexOf(given.text());
  found.values[index] = readValue(env, object);
  for (const BareListener& to : found.listeners) {
    env->PushLocalFrame(kDeliveryFrame);
    env->CallStaticVoidMethod(helper, deliver, to.listener, to.source, found.javaPath,
                              found.javaName);
    env->ExceptionClear();
    env->PopLocalFrame(nullptr);
  }
}

FLOOR(jobjectArray, children)(JNIEnv* env, jclass, jlong tree, jobjectArray path) {
  env->CallStaticIntMethod(helper, arguments, given.begin(env), path, nullptr, nullptr);
  BareNode* node = &treeOf(tree);
  for (int nodes = *given.at++; nodes > 0; --nodes) node = node->nodes.at(given.text()).get();
  std::string joined;
  for (const auto& key : node->keys) joined.append(key.first).push_back('\n');
  return static_cast<jobjectArray>(env->CallStaticObjectMethod(
      helper, split, env->NewStringUTF(joined.c_str()), static_cast<jint>(node->keys.size())));
}

#undef FLOOR

}  // namespace bench
