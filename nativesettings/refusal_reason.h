// The host's text for a Java exception whose message, by the contract, has less. The constructor of
// the exception may ask the lane for it (NativeLane.refusalReason); a Java half that does not ask
// has the contract's message.
#pragma once

#include <string>
#include <string_view>

namespace nativesettings {

// A scope in which the calling thread makes the Java exception for a refusal. Borrows the text and
// the name of the failure, which is empty if the host gives none.
class RefusalReason {
 public:
  explicit RefusalReason(const std::string& text, const char* failure = "")
      : text_(text), failure_(failure), outer_(current_) {
    current_ = this;
  }
  ~RefusalReason() { current_ = outer_; }
  RefusalReason(const RefusalReason&) = delete;
  RefusalReason& operator=(const RefusalReason&) = delete;

  // Returns the text of the innermost scope of the calling thread; null if there is none. Narrow
  // text.
  static const std::string* current() { return current_ ? &current_->text_ : nullptr; }
  // Returns whether the innermost scope is that of a store which failed (service/failures.h).
  static bool isOfStore() {
    return current_ && current_->failure_ == std::string_view("StoreFailure");
  }

 private:
  inline static thread_local const RefusalReason* current_ = nullptr;
  const std::string& text_;
  const char* const failure_;
  const RefusalReason* const outer_;
};

}  // namespace nativesettings
