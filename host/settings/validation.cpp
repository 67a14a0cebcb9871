#include "host/settings/validation.h"

#include <boost/variant/apply_visitor.hpp>
#include <boost/variant/get.hpp>
#include <boost/variant/static_visitor.hpp>
#include <chrono>
#include <memory>
#include <thread>

#include "base/mutex.h"
#include "service/failures.h"

namespace zlutil::settings {
namespace {

using KORVEN::settings::core::CValidationError;
using KORVEN::settings::core::ValidationFailure;

// A function that the host's other half installs, drops and replaces while calls may be running.
template <class Function>
class InstalledFunction {
 public:
  using Pointer = std::shared_ptr<const Function>;

  // Gives the one that was there: whoever is in a call of it shares it.
  Pointer install(const Function& function) EXCLUDES(mutex_) {
    Pointer next = function ? std::make_shared<const Function>(function) : Pointer();
    base::MutexLock lock(mutex_);
    function_.swap(next);
    return next;
  }

  // To call with no lock held; null when there is none.
  Pointer get() const EXCLUDES(mutex_) {
    base::MutexLock lock(mutex_);
    return function_;
  }

 private:
  mutable base::Mutex mutex_;
  Pointer function_ GUARDED_BY(mutex_);
};

InstalledFunction<ZValidator::Evaluator>& evaluator() {
  static auto& installed = *new InstalledFunction<ZValidator::Evaluator>;
  return installed;
}

InstalledFunction<JValidator::Proxy>& javaProxy() {
  static auto& installed = *new InstalledFunction<JValidator::Proxy>;
  return installed;
}

class Run : public boost::static_visitor<void> {
 public:
  Run(const boost::shared_ptr<const Settings>& node, const std::string& key,
      const boost::any& value)
      : node_(node), key_(key), value_(value) {}

  void operator()(const void_&) const {}

  void operator()(const ZValidator& validator) const {
    const auto evaluate = evaluator().get();
    if (!evaluate) {
      throw Failure<ValidationFailure>(std::string("No evaluator is installed for the script \"") +
                                       validator.text() + "\" that guards \"" + key_ + "\".");
    }
    if (const auto reason = (*evaluate)(validator.text(), node_, key_, value_)) {
      throw Failure<ValidationFailure>(*reason);
    }
  }

  void operator()(const CValidator& validator) const {
    boost::optional<std::string> reason;
    try {
      reason = validator.function()(node_, key_, value_);
    } catch (const std::exception& failure) {
      reason = std::string(failure.what());
    }
    if (reason) throw Failure<CValidationError>(*reason);
  }

  void operator()(const JValidator& validator) const {
    if (const auto proxy = javaProxy().get()) {
      (*proxy)(validator.first(), validator.second(), node_, key_, value_);
    }
  }

 private:
  const boost::shared_ptr<const Settings>& node_;
  const std::string& key_;
  const boost::any& value_;
};

}  // namespace

void ZValidator::setEvaluator(const Evaluator& evaluate) { evaluator().install(evaluate); }
void JValidator::setJValProxy(const Proxy& proxy) { javaProxy().install(proxy); }

void JValidator::clearFunctions() {
  const std::weak_ptr<const Proxy> dropped = javaProxy().install(Proxy());
  while (!dropped.expired()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

namespace host {

ValidatorPtr makeValidator(const ValidatorChoice& choice) {
  return boost::get<void_>(&choice) ? ValidatorPtr() : ValidatorPtr(new Validator(choice));
}

const ValidatorChoice& choiceOf(const ValidatorPtr& validator) {
  static const auto& none = *new ValidatorChoice;
  return validator ? validator->choice : none;
}

void runValidator(const Validator& validator, const boost::shared_ptr<const Settings>& node,
                  const std::string& key, const boost::any& value) {
  boost::apply_visitor(Run(node, key, value), validator.choice);
}

}  // namespace host
}  // namespace zlutil::settings
