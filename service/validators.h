// Validators guard the values of a key. A key is guarded by its own validator, else by that of the
// nearest enclosing node that has one. They run on every set, commit and validation, before
// anything is stored and with no lock held; a validator may read and change settings. Reading a
// settings file runs none.
#pragma once

#include <boost/any.hpp>
#include <boost/function.hpp>
#include <boost/optional.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/variant/variant.hpp>
#include <string>

#include "base/export.h"
#include "service/failures.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// No validator.
struct void_ {};

// A validator written in the host's scripting language. Its text is run by the evaluator that the
// host has installed; without one every value is refused.
class SETTINGS_HOST_API ZValidator {
 public:
  // Given the text, the node that holds the key, the key's name and the candidate value: nothing
  // when the value is valid, else the reason why not. May be called from any thread.
  using Evaluator = boost::function<boost::optional<std::string>(
      const std::string&, const boost::shared_ptr<const Settings>&, const std::string&,
      const boost::any&)>;

  explicit ZValidator(const std::string& text) : text_(text) {}
  const std::string& text() const { return text_; }

  // Installs the process's evaluator; an empty function removes it.
  static void setEvaluator(const Evaluator& evaluator);

 private:
  std::string text_;
};

// A validator written in C++.
class SETTINGS_HOST_API CValidator {
 public:
  // Given the node that holds the key, the key's name and the candidate value: nothing when the
  // value is valid, else the reason why not, which the caller receives as a CValidationError. A
  // std::exception out of it counts as a refusal with its what() as the reason. May be called from
  // any thread.
  using Function = boost::function<boost::optional<std::string>(
      const boost::shared_ptr<const Settings>&, const std::string&, const boost::any&)>;

  explicit CValidator(const Function& function) : function_(function) {}
  const Function& function() const { return function_; }

 private:
  Function function_;
};

// What a proxy throws in place of its base when it does not know the class that the validator
// names: another proxy may know it. A proxy that never throws it is taken to know every class.
class SETTINGS_HOST_API UnknownJavaValidator
    : public Failure<KORVEN::settings::core::FailedToRunJavaValidator> {
  using Exception::Exception;
};

// A validator written in Java, known by two strings. The service cannot run it itself: it calls the
// proxy that the Java side has installed, and without one the validator is not run.
//
// Each library that calls these functions has a proxy of its own. The service first asks the one of
// the library that has made the entry, if it is still installed, then the others in the order of
// their installation, until one knows the class. When none does, the value is refused.
class SETTINGS_HOST_API JValidator {
 public:
  // Given the two strings, the node that holds the key, the key's name and the candidate value:
  // returns when the value is valid and throws otherwise. May be called from any thread.
  using Proxy = boost::function<void(const std::string&, const std::string&,
                                     const boost::shared_ptr<const Settings>&, const std::string&,
                                     const boost::any&)>;

  JValidator(const std::string& first, const std::string& second)
      : first_(first), second_(second) {}
  const std::string& first() const { return first_; }
  const std::string& second() const { return second_; }

  // Installs the calling library's proxy in place of an earlier one; the service copies it.
  static void setJValProxy(const Proxy& proxy);

  // For a library that is about to be unmapped. Drops its proxy, and waits for the calls of it that
  // have begun, and until no other thread is still letting go of a callback whose subscription has
  // ended: when it returns, none of this runs. Not to be called within a call of the proxy.
  static void clearFunctions();

 private:
  std::string first_;
  std::string second_;
};

using ValidatorChoice = boost::variant<void_, ZValidator, CValidator, JValidator>;

}  // namespace settings
}  // namespace zlutil
