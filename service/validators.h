// Validators check the values of a key. The effective validator of a key is its own, else that of
// the nearest enclosing node that has one. It runs on every set, commit and validation, before
// anything is stored and with no lock held; it may read and change settings. Reading a settings
// file runs none.
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

// A validator in the host's scripting language. The evaluator that the host has installed runs its
// text; without one every value is refused.
class SETTINGS_HOST_API ZValidator {
 public:
  // Takes the text, the node that holds the key, the key's name and the value. Returns nothing if
  // the value is valid, else the reason why not. May be called from any thread.
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

// A validator in C++.
class SETTINGS_HOST_API CValidator {
 public:
  // Takes the node that holds the key, the key's name and the value. Returns nothing if the value
  // is valid, else the reason why not, which the caller receives as a CValidationError. A
  // std::exception out of it counts as a refusal with its what() as the reason. May be called from
  // any thread.
  using Function = boost::function<boost::optional<std::string>(
      const boost::shared_ptr<const Settings>&, const std::string&, const boost::any&)>;

  explicit CValidator(const Function& function) : function_(function) {}
  const Function& function() const { return function_; }

 private:
  Function function_;
};

// The failure that a proxy throws in place of its base if it does not know the class that the
// validator names: another proxy may know it. A proxy that never throws it is taken to know every
// class.
class SETTINGS_HOST_API UnknownJavaValidator
    : public Failure<KORVEN::settings::core::FailedToRunJavaValidator> {
  using Exception::Exception;
};

// A validator in Java, known by two strings: its class and an argument. The service itself runs the
// constraints (service/constraints.h). For every other class it calls the proxy that the Java side
// has installed; in a process without one, values are refused.
//
// Each library that calls these functions has a proxy of its own. The service first calls the one
// of the library that made the entry, if it is still installed, then the others in the order of
// their installation, until one knows the class. If none does, the value is refused.
class SETTINGS_HOST_API JValidator {
 public:
  // Takes the two strings, the node that holds the key, the key's name and the value. Returns if
  // the value is valid and throws otherwise. May be called from any thread.
  using Proxy = boost::function<void(const std::string&, const std::string&,
                                     const boost::shared_ptr<const Settings>&, const std::string&,
                                     const boost::any&)>;

  JValidator(const std::string& first, const std::string& second)
      : first_(first), second_(second) {}
  const std::string& first() const { return first_; }
  const std::string& second() const { return second_; }

  // Installs the calling library's proxy in place of its earlier one; the service copies it.
  static void setJValProxy(const Proxy& proxy);

  // Removes the calling library's proxy, for a library that is about to be unmapped. Waits until
  // the calls of the proxy that have begun are over and no other thread is still destroying a
  // callback whose subscription has ended. The caller must not be within a call of the proxy.
  static void clearFunctions();

  // From now on, while no proxy is installed, values are accepted unchecked that only Java could
  // check. For a program that takes that on itself.
  SETTINGS_HOST_OPTION static void acceptUnchecked();

 private:
  std::string first_;
  std::string second_;
};

using ValidatorChoice = boost::variant<void_, ZValidator, CValidator, JValidator>;

}  // namespace settings
}  // namespace zlutil
