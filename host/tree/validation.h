// Validators inside the service: how an entry owns one, and how one is run. runValidator() must not
// be called with a lock held, because a validator is foreign code that may read and change
// settings. Any thread.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <string>

#include "host/tree/java_proxies.h"
#include "service/validators.h"

namespace zlutil::settings::host {

// An entry's validator, shared by the entry and by the threads that run it. Immutable.
struct Validator : boost::intrusive_ref_counter<Validator> {
  Validator(const ValidatorChoice& validator, const JavaProxyPtr& proxy)
      : choice(validator), origin(proxy) {}
  const ValidatorChoice choice;
  // The proxy of the library that has brought a Java validator; none if it came from a file.
  const WeakJavaProxy origin;
};
using ValidatorPtr = boost::intrusive_ptr<const Validator>;

// Returns null for the choice `void_`.
ValidatorPtr makeValidator(const ValidatorChoice& choice, const JavaProxyPtr& origin = {});

// Returns the choice of a validator; `void_` for null.
const ValidatorChoice& choiceOf(const ValidatorPtr& validator);

// Runs the validator on a value for the key `key` of `node`. Throws ValidationFailure,
// CValidationError, or what the Java proxy throws, if it refuses the value.
void runValidator(const Validator& validator, const boost::shared_ptr<const Settings>& node,
                  const std::string& key, const boost::any& value);

}  // namespace zlutil::settings::host
