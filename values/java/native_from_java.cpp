// Java objects to native values.
#include <stdexcept>

#include "bridge/java_layer.h"
#include "values/java/class_records.h"
#include "values/java/java_values.h"
#include "values/java/local_frames.h"
#include "values/java/my_wrapper.h"
#include "values/try_next_type.h"

namespace nativesettings {
namespace {

using namespace zlutil::boostany;

// Ends the conversion if a getter of the object has thrown.
void throwIfPending(JNIEnv* env) {
  if (env->ExceptionCheck()) throw std::runtime_error("a getter of the value threw");
}

void refuseNull(jobject object) {
  if (!object) throw std::invalid_argument("null value");
}

// Reads boxed objects as a native type, through a record of their class.
template <class Type>
class BoxReader {
 public:
  BoxReader(JNIEnv* env, ClassInfo& record) : env_(env) {
    if constexpr (std::is_same_v<Type, bool>) {
      getter_ = find(record, "booleanValue", "()Z");
    } else if constexpr (std::is_floating_point_v<Type>) {
      getter_ = find(record, "doubleValue", "()D");
    } else {
      getter_ = find(record, "longValue", "()J");
    }
  }

  Type operator()(jobject object) const {
    refuseNull(object);
    Type value;
    if constexpr (std::is_same_v<Type, bool>) {
      value = env_->CallBooleanMethod(object, getter_) == JNI_TRUE;
    } else if constexpr (std::is_floating_point_v<Type>) {
      value = static_cast<Type>(env_->CallDoubleMethod(object, getter_));
    } else {
      // Truncated without a check: the kind was chosen by the object's own class.
      value = static_cast<Type>(env_->CallLongMethod(object, getter_));
    }
    throwIfPending(env_);
    return value;
  }

 private:
  jmethodID find(ClassInfo& record, const char* name, const char* signature) {
    jmethodID id = jzi::safeGetMethodID(env_, globalConsInfos, record, record.getterID(), name,
                                        signature, false);
    throwIfPending(env_);
    return id;
  }

  JNIEnv* const env_;
  jmethodID getter_;
};

template <>
class BoxReader<std::string> {
 public:
  BoxReader(JNIEnv* env, ClassInfo&) : env_(env) {}
  std::string operator()(jobject object) const {
    refuseNull(object);
    return zljGetStdString(env_, static_cast<jstring>(object));
  }

 private:
  JNIEnv* const env_;
};

// Takes the first kind that the class is assignable to. Lookups go through a copy of the static
// record, which borrows the class that the Java layer has resolved and leaves the record unchanged.
struct ConvertFromJavaObjectVisitor {
  JNIEnv* env;
  jobject value;
  jclass cls;
  boost::optional<SettingValueVariant> result;

  template <class Type>
  void visit() {
    if (result) return;
    ClassInfo record(recordOf<Type>());
    jclass target;
    if constexpr (kIsVector<Type>) {
      target = recordOf<Type>().getArrayClass(env);
    } else {
      target = jzi::safeFindClass(env, globalConsInfos, record);
    }
    if (!target || !env->IsAssignableFrom(cls, target)) return;
    refuseNull(value);
    const BoxReader<ElementOf<Type>> read(env, record);
    if constexpr (kIsVector<Type>) {
      result.emplace(readArray<Type>(read));
    } else {
      result.emplace(read(value));
    }
  }

  template <class Vector>
  Vector readArray(const BoxReader<ElementOf<Vector>>& read) {
    const auto array = static_cast<jobjectArray>(value);
    const jsize length = env->GetArrayLength(array);
    Vector elements;
    elements.reserve(length);
    LocalFrames frames(env);
    for (jsize i = 0; i < length; ++i) {
      frames.step();
      elements.push_back(read(env->GetObjectArrayElement(array, i)));
    }
    return elements;
  }
};

}  // namespace

boost::optional<SettingValueVariant> getValueFromJava(JNIEnv* env, jobject value, jclass cls) {
  if (!cls) return boost::none;
  ConvertFromJavaObjectVisitor visitor{env, value, cls, boost::none};
  TryNextType<kFirstKind>::runFunctor<MyWrapper>(visitor);
  return std::move(visitor.result);
}

}  // namespace nativesettings
