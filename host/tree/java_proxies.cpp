#include "host/tree/java_proxies.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/never_destroyed.h"
#include "host/tree/standard_validators.h"

namespace zlutil::settings::host {

using KORVEN::settings::core::FailedToRunJavaValidator;
using KORVEN::settings::core::JVMNotReadyForProcessingJavaFunction;
using KORVEN::settings::core::ValidationFailure;

JavaProxies& JavaProxies::instance() {
  static base::NeverDestroyed<JavaProxies> proxies;
  return proxies.get();
}

JavaProxyPtr JavaProxies::install(const void* library, const JValidator::Proxy& function) {
  JavaProxyPtr next = function ? JavaProxyPtr(new JavaProxy{library, function}) : nullptr;
  JavaProxyPtr previous;
  base::MutexLock lock(mutex_);
  const auto found = std::find_if(proxies_.begin(), proxies_.end(),
                                  [&](const auto& proxy) { return proxy->library == library; });
  if (found != proxies_.end()) {
    previous = *found;
    proxies_.erase(found);
  }
  if (next) proxies_.push_back(std::move(next));
  return previous;
}

JavaProxyPtr JavaProxies::of(const void* library) const {
  base::MutexLock lock(mutex_);
  for (const JavaProxyPtr& proxy : proxies_) {
    if (proxy->library == library) return proxy;
  }
  return nullptr;
}

std::vector<WeakJavaProxy> JavaProxies::installed(const WeakJavaProxy& first) const {
  base::MutexLock lock(mutex_);
  std::vector<WeakJavaProxy> proxies(proxies_.begin(), proxies_.end());
  const auto found = std::find(proxies_.begin(), proxies_.end(), first.lock());
  const auto at = proxies.begin() + (found - proxies_.begin());
  if (at != proxies.end()) std::rotate(proxies.begin(), at, at + 1);
  return proxies;
}

void JavaProxies::run(const WeakJavaProxy& preferred, const JValidator& validator,
                      const boost::shared_ptr<const Settings>& node, const std::string& key,
                      const boost::any& value) const {
  if (const auto judgement = judged(validator, value)) {
    if (*judgement) throw Failure<ValidationFailure>(**judgement);
    return;
  }
  const std::vector<WeakJavaProxy> proxies = installed(preferred);
  if (proxies.empty()) return refuseUnchecked(validator, key);
  std::optional<Failure<FailedToRunJavaValidator>> unknown;
  for (const WeakJavaProxy& weak : proxies) {
    // Shared until the handlers have ended: the exception's code belongs to the proxy's library.
    const JavaProxyPtr proxy = weak.lock();
    if (!proxy) continue;
    try {
      return proxy->function(validator.first(), validator.second(), node, key, value);
    } catch (const UnknownJavaValidator& failure) {
      if (!unknown) unknown.emplace(static_cast<const Failure<FailedToRunJavaValidator>&>(failure));
    } catch (const Failure<FailedToRunJavaValidator>& failure) {
      throw Failure<FailedToRunJavaValidator>(failure);
    } catch (const Failure<ValidationFailure>& failure) {
      throw Failure<ValidationFailure>(failure);
    } catch (const Failure<JVMNotReadyForProcessingJavaFunction>& failure) {
      throw Failure<JVMNotReadyForProcessingJavaFunction>(failure);
    }
  }
  if (unknown) throw Failure<FailedToRunJavaValidator>(*std::as_const(unknown));
}

void JavaProxies::refuseUnchecked(const JValidator& validator, const std::string& key) const {
  if (acceptsUnchecked_.load(std::memory_order_relaxed)) return;
  throw Failure<ValidationFailure>("\"" + key + "\" has the Java validator " + validator.first() +
                                   ", which cannot be run: there is no Java in this process.");
}

}  // namespace zlutil::settings::host
