// Adding a key together with its first value, as one change: one commit of the store and one step
// in memory, so no reader ever finds the key without the value. An option of the service beside the
// contract: a host may leave it out, and a caller checks at run time whether it is there. Any
// thread.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <string>

#include "base/export.h"
#include "service/settings_fwd.h"
#include "service/validators.h"

namespace zlutil {
namespace settings {

class SETTINGS_HOST_API NewKey {
 public:
  // Adds the key `name` to `parent` with its first value at `level`. Publishes the addition and
  // then the value. Throws what Settings::attachTo and Settings::setAny throw, with nothing added.
  static void add(const boost::shared_ptr<Settings>& parent, const std::string& name,
                  const ValidatorChoice& validator, const boost::any& value,
                  const std::string& level);

  // Makes one change of the two calls that add a key with a value: from now on, a key that this
  // thread attaches is checked and then waits, in no tree yet, for this thread to set its value.
  // settle() ends that, and adds a key that still waits without a value. Each call of expectValue()
  // must be followed by one of settle() on the same thread; such pairs may be nested.
  SETTINGS_HOST_OPTION static void expectValue();
  // Ends what expectValue() began. Throws what Settings::attachTo throws.
  SETTINGS_HOST_OPTION static void settle();

  NewKey() = delete;
};

}  // namespace settings
}  // namespace zlutil
