// Why a key has the value that it has: for people and for tools. An option of the service beside
// the contract: a host may leave it out. Any thread.
#pragma once

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/export.h"
#include "service/description.h"
#include "service/locks.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// One level of a key. Texts are standard UTF-8 but for those in the value, which are narrow.
struct LevelExplanation {
  std::string level;
  boost::any value;         // empty if the level has none
  bool isInEffect = false;  // whether this is the effective value
  bool isLocked = false;    // whether the level has no effect because of the key's lock
  // Where the value comes from: a file with line and column, a database, or the memory of this
  // process. Empty if there is no value.
  std::string source;
  // Why a stored value of the level is left out, such as its type; empty if there is none.
  std::string leftOut;
  // Files of the level that are left out whole, with the mistake of each.
  std::vector<std::string> unreadable;
  std::string readOnlyReason;  // why the level is read-only; empty if it is not
};

struct Explanation {
  std::string path;
  SettingDescription description;
  int kind = 0;                          // of values/value_kinds.h; 0 if it is not fixed yet
  std::string validator;                 // the effective one, as text; empty if there is none
  std::string validatorPath;             // the entry that has the validator
  std::optional<SettingLock> lock;       // that counts for the key
  std::vector<LevelExplanation> levels;  // all of them, the highest first
};

// Explains a key, as of one moment. Settings files are read again for the positions of values, so
// this takes as long as reading the files of a level. Throws NoSuchKey for null and NotAKeyName for
// a node.
SETTINGS_HOST_OPTION Explanation explainKey(const boost::shared_ptr<Settings>& key);

}  // namespace settings
}  // namespace zlutil
