// Descriptions of entries for people and for programs that show settings: settings files supply
// them. An option of the service beside the contract: a host may leave it out. Any thread.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "base/export.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// A value that a key may have. Texts are standard UTF-8.
struct SettingChoice {
  std::string value;  // as the text of a settings file
  std::string label;  // for people; may be empty
};

// Every text is standard UTF-8, and empty if no file gives it.
struct SettingDescription {
  std::string title;
  std::string text;        // one or more sentences
  std::string unit;        // of a key's values, such as "pt"
  std::string deprecated;  // why the entry should not be used any more
  std::string replacedBy;  // the path of the entry to use instead of a deprecated one
  std::string replaces;    // the path under which values of a key were stored formerly
  std::vector<SettingChoice> choices;
  // The constraint of a key's values, such as "range 1..72"; of a validator, "java", its class and
  // its argument. It is the key's own, or that of the nearest node above it.
  std::string constraint;
};

// Returns the description of the entry. Of several files' texts the lowest level's counts. Throws
// NoSuchNode for null.
SETTINGS_HOST_OPTION SettingDescription describe(const boost::shared_ptr<Settings>& entry);

}  // namespace settings
}  // namespace zlutil
