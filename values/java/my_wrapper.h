// The functor that calls a visitor's visit<Type>() for each kind of a walk
// (values/try_next_type.h).
#pragma once

namespace nativesettings {

struct MyWrapper {
  template <class Type, class Visitor>
  static void call(Visitor& visitor) {
    visitor.template visit<Type>();
  }
};

}  // namespace nativesettings
