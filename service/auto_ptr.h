// The owning pointer that subscriptions are handed over in. The service's interface has
// std::auto_ptr, which is deprecated; the alias confines it, and its warning, to this file.
#pragma once

#include <memory>

namespace zlutil {
namespace eventmgr {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
template <class Type>
using AutoPtr = std::auto_ptr<Type>;

template <class Type>
AutoPtr<Type> makeAuto(Type* adopted) {
  return AutoPtr<Type>(adopted);
}
#pragma GCC diagnostic pop

}  // namespace eventmgr
}  // namespace zlutil
