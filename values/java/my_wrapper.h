// The functor that hands each kind of a walk (values/try_next_type.h) to a visitor's visit<Type>().
#pragma once

namespace nativesettings {

struct MyWrapper {
  template <class Type, class Visitor>
  static void call(Visitor& visitor) {
    visitor.template visit<Type>();
  }
};

}  // namespace nativesettings
