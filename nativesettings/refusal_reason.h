// The host's text for a Java exception whose message, by the contract, has less. The constructor of
// the exception may ask the lane for it (NativeLane.refusalReason); a Java half that does not ask
// has the contract's message.
#pragma once

#include <string>

namespace nativesettings {

// A scope in which the calling thread makes the Java exception for a refusal. Borrows the text.
class RefusalReason {
 public:
  explicit RefusalReason(const std::string& text) : outer_(current_) { current_ = &text; }
  ~RefusalReason() { current_ = outer_; }
  RefusalReason(const RefusalReason&) = delete;
  RefusalReason& operator=(const RefusalReason&) = delete;

  // Returns the text of the innermost scope of the calling thread; null if there is none. Narrow
  // text.
  static const std::string* current() { return current_; }

 private:
  inline static thread_local const std::string* current_ = nullptr;
  const std::string* const outer_;
};

}  // namespace nativesettings
