// Adding a key together with its first value, as one change: one commit of the store and one step
// in memory, so nobody ever finds the key without the value. An extension of the contract that a
// host may leave out; who uses it asks at run time whether it is there. Any thread.
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
  // Adds the key `name` to `parent` with its first value at `level`. Listeners hear of the addition
  // and then of the value. Throws what Settings::attachTo and Settings::setAny throw; then nothing
  // has been added.
  static void add(const boost::shared_ptr<Settings>& parent, const std::string& name,
                  const ValidatorChoice& validator, const boost::any& value,
                  const std::string& level);

  // Makes one change of the two calls that add a key with a value: from now on, a key that this
  // thread attaches is checked and then waits, unseen, for this thread to set its value. settle()
  // ends that, and adds a key that is still waiting without a value. Each call of expectValue() is
  // followed by one of settle() on the same thread; between them they may be nested.
  SETTINGS_HOST_OPTION static void expectValue();
  // Throws what Settings::attachTo throws.
  SETTINGS_HOST_OPTION static void settle();

  NewKey() = delete;
};

}  // namespace settings
}  // namespace zlutil
