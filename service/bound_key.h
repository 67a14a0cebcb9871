// A key whose place in a tree has been looked up once, so that it can be read and changed again
// without its path. An option of the service beside the contract: a host may leave bindKey() out.
//
// A bound key does what is in order and refuses everything else, with nothing done: whoever is
// refused asks the node that holds the key (service/settings.h), which says why. It follows its
// place: when the key is removed and another one is added there, it is bound to that one.
//
// Threads: every operation may be called from any thread, at the same time as any other.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

#include "base/export.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

class BoundKey {
 public:
  // In place of a level: the value in effect.
  static constexpr int kInEffect = -1;

  virtual ~BoundKey() = default;

  // Copies the value at the level, the level's position in SettingsLevelManager::getAllLevelNames()
  // or kInEffect, into `value`, which becomes empty when there is none. Returns false if there is
  // no such key.
  virtual bool getValue(int level, boost::any& value) const noexcept = 0;

  // Sets the value at the level, as Settings::setAny does. Returns false, with nothing set, if
  // there is no such key, a validator has to be asked, the value is of another type than the key's
  // or the change is refused or cannot be stored. Takes `value` when it returns true.
  virtual bool setAny(int level, boost::any& value) noexcept = 0;

  // Removes the value from the level, as Settings::unset does. Returns false, with nothing removed,
  // if there is no such key, the level has no value or the change is refused or cannot be stored.
  virtual bool unset(int level) noexcept = 0;

  // Returns the key as an entry, null if there is none.
  virtual boost::shared_ptr<Settings> entry() const noexcept = 0;
};

// Binds the key at the path of names, its own the last, below the root of a tree. The key need not
// exist. Returns null for a root or a path that no key can be bound below.
SETTINGS_HOST_OPTION std::unique_ptr<BoundKey> bindKey(const boost::shared_ptr<Settings>& root,
                                                       std::vector<std::string> names);

}  // namespace settings
}  // namespace zlutil
