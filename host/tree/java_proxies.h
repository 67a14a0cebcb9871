// The functions that run Java validators, one for each library that has installed one: several
// bridges may share the host of a process, each with the classes of its own class loader. No lock
// is held while a proxy runs. Any thread.
#pragma once

#include <atomic>
#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

#include "base/mutex.h"
#include "service/validators.h"

namespace zlutil::settings::host {

struct JavaProxy {
  const void* const library;  // base/loaded_library.h
  const JValidator::Proxy function;
};
using JavaProxyPtr = std::shared_ptr<const JavaProxy>;
using WeakJavaProxy = std::weak_ptr<const JavaProxy>;

class JavaProxies {
 public:
  // The proxies of the process. Leaked on purpose: threads may validate while the process exits.
  static JavaProxies& instance();

  // Installs `function` as the library's proxy, or removes the proxy if it is empty. Returns the
  // previous one, which running calls share.
  JavaProxyPtr install(const void* library, const JValidator::Proxy& function) EXCLUDES(mutex_);

  // The library's proxy, or null.
  JavaProxyPtr of(const void* library) const EXCLUDES(mutex_);

  // Runs a constraint itself (standard_validators.h). Runs another validator by `preferred`, if it
  // is still installed, or else by the others in the order of their installation, until one knows
  // its class. Returns if the value is valid. Throws what the proxy that knows the class throws; if
  // none knows it, what the first proxy threw. Without any proxy the value is refused, unless
  // acceptUnchecked() has been called. The exceptions are copies made by the host: a proxy's
  // library may be unmapped after the call.
  void run(const WeakJavaProxy& preferred, const JValidator& validator,
           const boost::shared_ptr<const Settings>& node, const std::string& key,
           const boost::any& value) const EXCLUDES(mutex_);

  void acceptUnchecked() { acceptsUnchecked_ = true; }

 private:
  void refuseUnchecked(const JValidator& validator, const std::string& key) const;
  // Weak, so that no library waits for calls of another library's proxy.
  std::vector<WeakJavaProxy> installed(const WeakJavaProxy& first) const EXCLUDES(mutex_);

  std::atomic<bool> acceptsUnchecked_{false};
  mutable base::Mutex mutex_;
  std::vector<JavaProxyPtr> proxies_ GUARDED_BY(mutex_);
};

}  // namespace zlutil::settings::host
