// The proxies that run Java validators: one for each library that has installed one, because
// several bridges may use the one host of a process, each with the classes of its own class loader.
// Any thread; no lock is held while a proxy runs.
#pragma once

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
  // The process's proxies. Leaked on purpose: threads may validate while the process exits.
  static JavaProxies& instance();

  // Makes `function` the library's proxy, or takes it away when it is empty. Gives what was there:
  // whoever is in a call of it shares it.
  JavaProxyPtr install(const void* library, const JValidator::Proxy& function) EXCLUDES(mutex_);

  // The library's proxy; null when it has none.
  JavaProxyPtr of(const void* library) const EXCLUDES(mutex_);

  // Has the validator run by `preferred`, if it is still installed, else by the others in the order
  // of their installation, until one knows its class. Returns when the value is valid, or when
  // there is no proxy at all. Throws what the proxy throws that knows the class; what the first one
  // has said when none does. What is thrown is the host's own: a proxy's library may be unmapped as
  // soon as this has returned.
  void run(const WeakJavaProxy& preferred, const JValidator& validator,
           const boost::shared_ptr<const Settings>& node, const std::string& key,
           const boost::any& value) const EXCLUDES(mutex_);

 private:
  // Weak, so that nobody's library has to wait for a call of another's proxy.
  std::vector<WeakJavaProxy> installed(const WeakJavaProxy& first) const EXCLUDES(mutex_);

  mutable base::Mutex mutex_;
  std::vector<JavaProxyPtr> proxies_ GUARDED_BY(mutex_);
};

}  // namespace zlutil::settings::host
