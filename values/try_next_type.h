// A walk over the kinds N, N+1, ..., 24 in order, at compile time. It runs the functor's static
// `call<Type>(visitor)` for each kind; the visitor itself skips the kinds after the one that it
// wants.
#pragma once

#include "values/value_kinds.h"

namespace zlutil {
namespace boostany {

template <int N>
struct TryNextType {
  template <class Functor, class Visitor>
  static void runFunctor(Visitor& visitor) {
    if constexpr (N <= kLastKind) {
      Functor::template call<TypeOfKind<N>>(visitor);
      TryNextType<N + 1>::template runFunctor<Functor>(visitor);
    }
  }
};

}  // namespace boostany
}  // namespace zlutil
