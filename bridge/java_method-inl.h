// Implementation of bridge/java_method.h; included by it only.
#pragma once

namespace jzi {

template <class Result, bool IsReference>
jmethodID CallJavaMethod<Result, IsReference>::resolve(JNIEnv* env, jobject receiver) {
  using Named = typename Base::Named;
  using Resolved = typename Base::Resolved;
  if (const Resolved* resolved = std::get_if<Resolved>(&this->identity_)) {
    if (!env->IsInstanceOf(receiver, resolved->first)) throw std::bad_cast();
    return resolved->second;
  }
  const Named& named = std::get<Named>(this->identity_);
  jclass cls = env->GetObjectClass(receiver);
  const jmethodID id =
      detail::getMethodIDOfClass(env, cls, named.first.c_str(), named.second.c_str());
  this->identity_ = Resolved(cls, id);
  return id;
}

}  // namespace jzi
