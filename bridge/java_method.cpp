#include "bridge/java_method.h"

namespace jzi {

jmethodID detail::getMethodIDOfClass(JNIEnv* env, jclass cls, const char* name,
                                     const char* signature) {
  const jmethodID id = env->GetMethodID(cls, name ? name : "", signature);
  if (!id) throw std::runtime_error(std::string("java method not found: ") + (name ? name : ""));
  return id;
}

CreateJavaObject<jobject>::CreateJavaObject(JNIEnv* env, const char* className,
                                            const char* constructorSignature, NewFunction make)
    : JavaMethod(find(env, className, constructorSignature, make), make) {}

CreateJavaObject<jobject>::Resolved CreateJavaObject<jobject>::find(JNIEnv* env,
                                                                    const char* className,
                                                                    const char* signature,
                                                                    NewFunction make) {
  if (!env) throw std::runtime_error("JavaMethod::env cannot be NULL.");
  checked(make);
  jclass cls = env->FindClass(className);
  if (!cls) throw std::runtime_error(std::string("java class not found: ") + className);
  return Resolved(cls, detail::getMethodIDOfClass(env, cls, "<init>", signature));
}

}  // namespace jzi
