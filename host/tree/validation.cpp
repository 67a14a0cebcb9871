#include "host/tree/validation.h"

#include <boost/variant/apply_visitor.hpp>
#include <boost/variant/get.hpp>
#include <boost/variant/static_visitor.hpp>
#include <chrono>
#include <memory>
#include <thread>

#include "base/loaded_library.h"
#include "base/mutex.h"
#include "base/never_destroyed.h"
#include "host/events/subscribers.h"
#include "service/failures.h"

namespace zlutil::settings {
namespace {

using host::JavaProxies;
using host::WeakJavaProxy;
using KORVEN::settings::core::CValidationError;
using KORVEN::settings::core::ValidationFailure;

// The evaluator of scripts. It is installed and replaced while calls may be running.
class InstalledEvaluator {
 public:
  using Pointer = std::shared_ptr<const ZValidator::Evaluator>;

  void install(const ZValidator::Evaluator& evaluate) EXCLUDES(mutex_) {
    Pointer next = evaluate ? std::make_shared<const ZValidator::Evaluator>(evaluate) : Pointer();
    base::MutexLock lock(mutex_);
    evaluate_.swap(next);
  }

  // The evaluator, or null. The caller calls it with no lock held.
  Pointer get() const EXCLUDES(mutex_) {
    base::MutexLock lock(mutex_);
    return evaluate_;
  }

 private:
  mutable base::Mutex mutex_;
  Pointer evaluate_ GUARDED_BY(mutex_);
};

InstalledEvaluator& evaluator() {
  static base::NeverDestroyed<InstalledEvaluator> installed;
  return installed.get();
}

class Run : public boost::static_visitor<void> {
 public:
  Run(const WeakJavaProxy& origin, const boost::shared_ptr<const Settings>& node,
      const std::string& key, const boost::any& value)
      : origin_(origin), node_(node), key_(key), value_(value) {}

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
    JavaProxies::instance().run(origin_, validator, node_, key_, value_);
  }

 private:
  const WeakJavaProxy& origin_;
  const boost::shared_ptr<const Settings>& node_;
  const std::string& key_;
  const boost::any& value_;
};

}  // namespace

void ZValidator::setEvaluator(const Evaluator& evaluate) { evaluator().install(evaluate); }

void JValidator::setJValProxy(const Proxy& proxy) {
  JavaProxies::instance().install(base::libraryOf(__builtin_return_address(0)), proxy);
}

void JValidator::acceptUnchecked() { JavaProxies::instance().acceptUnchecked(); }

void JValidator::clearFunctions() {
  const void* library = base::libraryOf(__builtin_return_address(0));
  const WeakJavaProxy dropped = JavaProxies::instance().install(library, Proxy());
  while (!dropped.expired() || eventmgr::isLettingGo(library)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

namespace host {

ValidatorPtr makeValidator(const ValidatorChoice& choice, const JavaProxyPtr& origin) {
  return boost::get<void_>(&choice) ? ValidatorPtr() : ValidatorPtr(new Validator(choice, origin));
}

const ValidatorChoice& choiceOf(const ValidatorPtr& validator) {
  static base::NeverDestroyed<ValidatorChoice> none;
  return validator ? validator->choice : none.get();
}

void runValidator(const Validator& validator, const boost::shared_ptr<const Settings>& node,
                  const std::string& key, const boost::any& value) {
  boost::apply_visitor(Run(validator.origin, node, key, value), validator.choice);
}

}  // namespace host
}  // namespace zlutil::settings
