// The literal floor: every step one direct JNI call, with classes and identifiers cached.
#include <malloc.h>

#include <stdexcept>

#include "bench/bridge/bare_tree.h"

namespace bench {
namespace {

JavaVM* vm;
jclass stringClass, integerClass, doubleClass, doubleArrayClass, infoClass, notFoundClass;
// In the order in which a value's class is compared with them.
std::vector<jclass> valueClasses;
jmethodID newInteger, newDouble, newInfo, getValue, longValue, doubleValue, createEvent, changed;

jclass globalClass(JNIEnv* env, const char* name) {
  return static_cast<jclass>(env->NewGlobalRef(env->FindClass(name)));
}

std::string text(JNIEnv* env, jobject from) {
  if (!from) return {};
  const auto string = static_cast<jstring>(from);
  const jsize length = env->GetStringLength(string);
  char buffer[256] = {};
  env->GetStringUTFRegion(string, 0, length, buffer);
  return buffer;
}

std::vector<std::string> names(JNIEnv* env, jobjectArray path) {
  const jsize length = env->GetArrayLength(path);
  std::vector<std::string> names;
  names.reserve(length);
  for (jsize i = 0; i < length; ++i) {
    names.push_back(text(env, env->GetObjectArrayElement(path, i)));
  }
  return names;
}

BareKey& requireKey(BareNode* node, const std::string& name) {
  BareKey* key = node ? node->key(name) : nullptr;
  if (!key) throw std::out_of_range("no key " + name);
  return *key;
}

jobject boxed(JNIEnv* env, const boost::any& value) {
  if (const int* number = boost::any_cast<int>(&value)) {
    return env->NewObject(integerClass, newInteger, *number);
  }
  if (const auto* string = boost::any_cast<std::string>(&value)) {
    return env->NewStringUTF(string->c_str());
  }
  const auto& items = *boost::any_cast<std::vector<double>>(&value);
  jobjectArray array = env->NewObjectArray(static_cast<jsize>(items.size()), doubleClass, nullptr);
  for (std::size_t i = 0; i < items.size(); ++i) {
    jobject item = env->NewObject(doubleClass, newDouble, items[i]);
    env->SetObjectArrayElement(array, static_cast<jsize>(i), item);
    env->DeleteLocalRef(item);
  }
  return array;
}

std::size_t kindOf(JNIEnv* env, jobject value) {
  jclass cls = env->GetObjectClass(value);
  std::size_t kind = 0;
  while (!env->IsAssignableFrom(cls, valueClasses.at(kind))) ++kind;
  return kind;
}

boost::any unboxed(JNIEnv* env, jobject value) {
  const std::size_t kind = kindOf(env, value);
  if (kind == 0) return text(env, value);
  if (valueClasses[kind] != doubleArrayClass) {
    const jlong number = env->CallLongMethod(value, longValue);
    env->ExceptionCheck();
    return static_cast<int>(number);
  }
  const auto array = static_cast<jobjectArray>(value);
  const jsize length = env->GetArrayLength(array);
  std::vector<double> items;
  items.reserve(length);
  for (jsize i = 0; i < length; ++i) {
    jobject item = env->GetObjectArrayElement(array, i);
    items.push_back(env->CallDoubleMethod(item, doubleValue));
    env->ExceptionCheck();
    env->DeleteLocalRef(item);
  }
  return items;
}

void deliver(const BareKey& key) {
  for (const BareListener& to : key.listeners) {
    void* attached = nullptr;
    vm->GetEnv(&attached, JNI_VERSION_1_4);
    auto* env = static_cast<JNIEnv*>(attached);
    env->PushLocalFrame(16);
    const auto length = static_cast<jsize>(key.parentPath.size());
    jobjectArray path = env->NewObjectArray(length, stringClass, nullptr);
    for (jsize i = 0; i < length; ++i) {
      jstring name = env->NewStringUTF(key.parentPath[i].c_str());
      env->SetObjectArrayElement(path, i, name);
      env->DeleteLocalRef(name);
    }
    jobject event = env->CallObjectMethod(to.listener, createEvent, to.source, path,
                                          env->NewStringUTF(key.name.c_str()), nullptr, JNI_FALSE);
    if (!env->ExceptionCheck()) env->CallVoidMethod(to.listener, changed, event);
    env->ExceptionClear();
    env->PopLocalFrame(nullptr);
  }
}

using Context = std::vector<std::pair<std::string, boost::any>>;

std::string dotted(const std::vector<std::string>& path, const std::string& key) {
  std::string dotted;
  for (const std::string& name : path) dotted += name + '.';
  return dotted + key;
}

BareKey& keyAt(BareNode& tree, const std::string& path) {
  BareNode* node = &tree;
  std::size_t begin = 0;
  for (std::size_t dot; (dot = path.find('.', begin)) != std::string::npos; begin = dot + 1) {
    node = node->nodes.at(path.substr(begin, dot - begin)).get();
  }
  return *node->keys.at(path.substr(begin));
}

}  // namespace

#define FLOOR(result, name) \
  extern "C" JNIEXPORT result JNICALL Java_com_velonix_services_settings_Literal_##name

FLOOR(void, prepare)(JNIEnv* env, jclass) {
  env->GetJavaVM(&vm);
  stringClass = globalClass(env, "java/lang/String");
  integerClass = globalClass(env, "java/lang/Integer");
  doubleClass = globalClass(env, "java/lang/Double");
  doubleArrayClass = globalClass(env, "[Ljava/lang/Double;");
  infoClass = globalClass(env, "com/velonix/services/settings/SettingInfo");
  notFoundClass = globalClass(env, "com/velonix/services/settings/SettingNotFoundException");
  const std::string elements[] = {"java/lang/String",  "java/lang/Boolean",
                                  "java/lang/Byte",    "com/velonix/util/types/UnsignedByte",
                                  "java/lang/Short",   "com/velonix/util/types/UnsignedShort",
                                  "java/lang/Integer", "com/velonix/util/types/UnsignedInteger",
                                  "java/lang/Long",    "com/velonix/util/types/UnsignedLong",
                                  "java/lang/Float",   "java/lang/Double"};
  for (const std::string& name : elements) valueClasses.push_back(globalClass(env, name.c_str()));
  for (const std::string& name : elements) {
    valueClasses.push_back(globalClass(env, ("[L" + name + ";").c_str()));
  }
  valueClasses.back() = doubleArrayClass;
  jclass number = env->FindClass("java/lang/Number");
  jclass listener = env->FindClass("com/velonix/services/settings/SettingListener");
  newInteger = env->GetMethodID(integerClass, "<init>", "(I)V");
  newDouble = env->GetMethodID(doubleClass, "<init>", "(D)V");
  newInfo = env->GetMethodID(infoClass, "<init>", "(Ljava/lang/Object;)V");
  getValue = env->GetMethodID(infoClass, "getValue", "()Ljava/lang/Object;");
  longValue = env->GetMethodID(number, "longValue", "()J");
  doubleValue = env->GetMethodID(number, "doubleValue", "()D");
  createEvent = env->GetMethodID(
      listener, "createEvent",
      "(Ljava/lang/Object;[Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Z)"
      "Lcom/velonix/services/settings/SettingChangeEvent;");
  changed = env->GetMethodID(listener, "settingChanged",
                             "(Lcom/velonix/services/settings/SettingChangeEvent;)V");
}

FLOOR(void, empty)(JNIEnv*, jclass) {}

FLOOR(jlong, nativeBytes)(JNIEnv*, jclass) {
  const struct mallinfo2 heap = mallinfo2();
  return static_cast<jlong>(heap.uordblks + heap.hblkhd);
}

FLOOR(jlong, createTree)(JNIEnv*, jclass, jint nodes) {
  auto tree = std::make_unique<BareNode>();
  auto top = std::make_unique<BareNode>();
  for (int i = 0; i < nodes; ++i)
    top->nodes["n" + std::to_string(i)] = std::make_unique<BareNode>();
  tree->nodes["top"] = std::move(top);
  return reinterpret_cast<jlong>(tree.release());
}

FLOOR(void, put)
(JNIEnv* env, jclass, jlong tree, jobjectArray path, jstring key, jobject info, jint level) {
  const std::vector<std::string> parent = names(env, path);
  const std::string name = text(env, key);
  auto& bareKey = treeOf(tree).at(parent)->keys[name];
  if (!bareKey) bareKey = std::make_unique<BareKey>();
  bareKey->name = name;
  bareKey->parentPath = parent;
  bareKey->values.at(level) = unboxed(env, env->CallObjectMethod(info, getValue));
}

FLOOR(jobject, get)
(JNIEnv* env, jclass, jlong tree, jobjectArray path, jstring key, jstring level) {
  try {
    BareNode* node = treeOf(tree).at(names(env, path));
    const BareKey& found = requireKey(node, text(env, key));
    const boost::any value = found.value(text(env, level));
    return env->NewObject(infoClass, newInfo, boxed(env, value));
  } catch (const std::exception&) {
    env->ThrowNew(notFoundClass, dotted(names(env, path), text(env, key)).c_str());
    return nullptr;
  }
}

FLOOR(void, set)
(JNIEnv* env, jclass, jlong context, jlong tree, jobjectArray path, jstring key, jobject info,
 jstring level) {
  const std::vector<std::string> parent = names(env, path);
  BareNode* node = treeOf(tree).at(parent);
  jobject object = env->CallObjectMethod(info, getValue);
  if (env->ExceptionCheck()) return;
  const std::string name = text(env, key);
  const std::string levelName = text(env, level);
  boost::any value = unboxed(env, object);
  BareKey& found = requireKey(node, name);
  if (context) {
    reinterpret_cast<Context*>(context)->emplace_back(dotted(parent, name), std::move(value));
    return;
  }
  found.values[BareKey::indexOf(levelName)] = std::move(value);
  deliver(found);
}

FLOOR(void, addListener)
(JNIEnv* env, jclass, jlong tree, jobjectArray path, jstring key, jobject source,
 jobject listener) {
  BareKey& found = requireKey(treeOf(tree).at(names(env, path)), text(env, key));
  found.listeners.push_back({env->NewGlobalRef(listener), env->NewGlobalRef(source)});
  found.javaPath = env->NewGlobalRef(path);
  found.javaName = env->NewGlobalRef(key);
}

FLOOR(jobjectArray, children)(JNIEnv* env, jclass, jlong tree, jobjectArray path) {
  const BareNode* node = treeOf(tree).at(names(env, path));
  jobjectArray array =
      env->NewObjectArray(static_cast<jsize>(node->keys.size()), stringClass, nullptr);
  jsize i = 0;
  for (const auto& key : node->keys) {
    jstring name = env->NewStringUTF(key.first.c_str());
    env->SetObjectArrayElement(array, i++, name);
    env->DeleteLocalRef(name);
  }
  return array;
}

FLOOR(jlong, createContext)(JNIEnv*, jclass) { return reinterpret_cast<jlong>(new Context); }

FLOOR(void, deleteContext)(JNIEnv*, jclass, jlong context) {
  delete reinterpret_cast<Context*>(context);
}

FLOOR(void, commit)(JNIEnv* env, jclass, jlong context, jlong tree, jstring level) {
  const std::size_t index = BareKey::indexOf(text(env, level));
  for (const auto& change : *reinterpret_cast<Context*>(context)) {
    keyAt(treeOf(tree), change.first).values[index] = change.second;
  }
}

#undef FLOOR

}  // namespace bench
