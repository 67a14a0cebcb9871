// Native values to Java objects, and kinds to Java classes.
#include <boost/variant/apply_visitor.hpp>
#include <boost/variant/static_visitor.hpp>

#include "bridge/converters.h"
#include "bridge/java_layer.h"
#include "values/java/class_records.h"
#include "values/java/java_values.h"
#include "values/java/my_wrapper.h"
#include "values/java/object_array.h"
#include "values/try_next_type.h"

namespace nativesettings {
namespace {

using namespace zlutil::boostany;

// The Java primitive by which a native type goes to the constructor of its box, bit for bit.
template <class Type>
using Carrier = std::conditional_t<
    std::is_same_v<Type, bool>, jboolean,
    std::conditional_t<std::is_floating_point_v<Type>, Type,
                       std::conditional_t<sizeof(Type) == 1, jbyte,
                                          std::conditional_t<sizeof(Type) == 2, jshort,
                                                             std::conditional_t<sizeof(Type) == 4,
                                                                                jint, jlong>>>>>;

template <class Type>
jobject boxed(JNIEnv* env, const Type& value) {
  if constexpr (std::is_same_v<Type, std::string>) {
    return jzi::ToJava::javaString(env, value);
  } else {
    return jzi::construct(env, globalConsInfos, &recordOf<Type>(),
                          static_cast<Carrier<Type>>(value));
  }
}

class ConvertFromCPPVisitor : public boost::static_visitor<jobject> {
 public:
  explicit ConvertFromCPPVisitor(JNIEnv* env) : env_(env) {}

  jobject operator()(const boost::blank&) const { return nullptr; }

  template <class Type>
  jobject operator()(const Type& value) const {
    return boxed(env_, value);
  }

  template <class Element>
  jobject operator()(const std::vector<Element>& values) const {
    return newObjectArray(
        env_, values.size(), jzi::getClass(env_, recordOf<Element>()),
        [&](std::size_t i) { return boxed(env_, static_cast<Element>(values[i])); });
  }

 private:
  JNIEnv* const env_;
};

// Finds the class of one kind in a walk over all.
struct GetTypeVisitor {
  JNIEnv* env;
  int kind;
  jclass result = nullptr;

  template <class Type>
  void visit() {
    if (kKindOf<Type> != kind) return;
    if constexpr (kIsVector<Type>) {
      result = recordOf<Type>().getArrayClass(env);
    } else {
      result = jzi::safeFindClass(env, globalConsInfos, recordOf<Type>());
    }
  }
};

}  // namespace

jobject getJavaValueFromKey(JNIEnv* env, const boost::any& value) {
  return boost::apply_visitor(ConvertFromCPPVisitor(env), convertAnyToVariant(value));
}

jclass getJavaClassOfKind(JNIEnv* env, int kind) {
  GetTypeVisitor visitor{env, kind};
  TryNextType<kFirstKind>::runFunctor<MyWrapper>(visitor);
  return visitor.result;
}

}  // namespace nativesettings
