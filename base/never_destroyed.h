// An object of static storage whose destructor never runs: threads that the process does not wait
// for may still use it while the process exits. Code that must release its content when the library
// is unloaded does so explicitly.
#pragma once

#include <new>
#include <utility>

namespace base {

template <class Type>
class NeverDestroyed {
 public:
  template <class... Arguments>
  explicit NeverDestroyed(Arguments&&... arguments) {
    new (storage_) Type(std::forward<Arguments>(arguments)...);
  }
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  Type& get() { return *std::launder(reinterpret_cast<Type*>(storage_)); }

 private:
  alignas(Type) unsigned char storage_[sizeof(Type)];
};

}  // namespace base
