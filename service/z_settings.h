// The functions of the settings service that make entries and tell where settings come from. All
// may be called from any thread.
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
  // A new detached entry. A node may be used as the root of a standalone tree; an entry is inserted
  // into a tree with attachTo(). The name is checked there, not here, because a root's name need
  // not be an identifier. `mayHaveListeners` is what canHaveListeners() answers. Never null.
  // ValidationFailure when the name or a text of the validator is no text.
  static boost::shared_ptr<Settings> createSettingsNode(const std::string& name, bool isKey,
                                                        bool mayHaveListeners,
                                                        const ValidatorChoice& validator);

  // The directory that the context's factory settings are read from. Never throws.
  static std::string getFactoryDir(const contextmgr::ZcrID& context);

  ZSettings() = delete;
};

}  // namespace settings
}  // namespace zlutil
