// Functions of the settings service that make entries and name the factory directory. All may be
// called from any thread.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "base/export.h"
#include "service/context.h"
#include "service/settings_fwd.h"
#include "service/validators.h"

namespace zlutil {
namespace settings {

// The name of the root of a standalone tree. It is no identifier, so a path that begins with it
// resolves in no other tree.
inline constexpr char kStandaloneRootName[] = "__STANDALONE_ROOT__";

class SETTINGS_HOST_API ZSettings {
 public:
  // Returns a new detached entry, never null. A node may be used as the root of a standalone tree;
  // attachTo() inserts an entry into a tree. The name is checked there, not here, because a root's
  // name need not be an identifier. `mayHaveListeners` is the result of canHaveListeners(). Throws
  // ValidationFailure if the name or a text of the validator is neither narrow text nor UTF-8.
  static boost::shared_ptr<Settings> createSettingsNode(const std::string& name, bool isKey,
                                                        bool mayHaveListeners,
                                                        const ValidatorChoice& validator);

  // Returns the directory that the context's factory settings are read from. Never throws.
  static std::string getFactoryDir(const contextmgr::ZcrID& context);

  ZSettings() = delete;
};

}  // namespace settings
}  // namespace zlutil
