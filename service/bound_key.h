// A key of a tree that is looked up once, so that it can be read and changed again without its
// path. An option of the service beside the contract: a host may leave bindKey() out.
//
// A bound key does the ordinary cases and returns false for all others, with nothing done; the
// caller then calls the node that holds the key (service/settings.h), which throws the reason. The
// binding is to the path: when the key is removed and another one is added there, it is bound to
// that one.
//
// Threads: every operation may be called from any thread, at the same time as any other.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/export.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

class BoundKey {
 public:
  // Stands in place of a level for the effective value.
  static constexpr int kEffective = -1;

  virtual ~BoundKey() = default;

  // Levels are positions in SettingsLevelManager::getAllLevelNames().

  // Copies the value at the level or the effective one into `value`, which becomes empty if there
  // is none. Returns false if there is no such key.
  virtual bool getValue(int level, boost::any& value) const noexcept = 0;

  // Does the same for a number, without allocation. `kind` is a number of values/value_kinds.h;
  // `bits` are those of values/number_bits.h. Returns false if there is no value, or one of another
  // kind.
  virtual bool getNumber(int level, int kind, std::int64_t& bits) const noexcept = 0;

  // Sets the value at the level, as Settings::setAny does. Returns false, with nothing set, if
  // there is no such key, a validator has to be called, the value is of another type than the
  // key's, or the change is refused or cannot be stored. Takes the content of `value` if it returns
  // true.
  virtual bool setAny(int level, boost::any& value) noexcept = 0;

  // Does the same for a number, given as to getNumber(). Allocates nothing if the level has a
  // value.
  virtual bool setNumber(int level, int kind, std::int64_t bits) noexcept = 0;

  // Removes the value at the level, as Settings::unset does. Returns false, with nothing removed,
  // if there is no such key, the level has no value, or the change is refused or cannot be stored.
  virtual bool unset(int level) noexcept = 0;

  // Returns the key as an entry, null if there is none.
  virtual boost::shared_ptr<Settings> entry() const noexcept = 0;
};

// Binds the key at a path below the root of a tree; the last of `names` is the key's own. The key
// need not exist. Returns null if no key can ever be there.
SETTINGS_HOST_OPTION std::unique_ptr<BoundKey> bindKey(const boost::shared_ptr<Settings>& root,
                                                       std::vector<std::string> names);

}  // namespace settings
}  // namespace zlutil
