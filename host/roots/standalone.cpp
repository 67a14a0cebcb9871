// Entries that belong to no context: detached ones, and trees read from a file.
#include <boost/make_shared.hpp>

#include "base/loaded_library.h"
#include "base/never_destroyed.h"
#include "host/change/given_text.h"
#include "host/files/settings_reader.h"
#include "host/os/file_name.h"
#include "host/os/log_error.h"
#include "service/failures.h"
#include "service/z_settings.h"
#include "values/value_kinds.h"

namespace zlutil::settings {
namespace {

// Returns the tree that all detached keys share. Nothing is ever attached to it: a detached key can
// only be asked for its name and be attached elsewhere.
const host::TreePtr& treeOfDetachedKeys() {
  static base::NeverDestroyed<host::TreePtr> tree(host::Tree::makeStandalone());
  return tree.get();
}

}  // namespace

boost::shared_ptr<Settings> ZSettings::createSettingsNode(const std::string& rawName, bool isKey,
                                                          bool mayHaveListeners,
                                                          const ValidatorChoice& validator) {
  const std::string name = host::narrowText(rawName, "a name");
  const host::ValidatorPtr ownValidator = host::makeValidator(
      host::withNarrowTexts(validator, name),
      host::JavaProxies::instance().of(base::libraryOf(__builtin_return_address(0))));
  if (isKey) {
    return boost::make_shared<host::Key>(treeOfDetachedKeys(), name, boostany::kNoValue,
                                         mayHaveListeners, ownValidator);
  }
  return boost::make_shared<host::Node>(host::Tree::makeStandalone(), name, mayHaveListeners,
                                        ownValidator);
}

boost::shared_ptr<Settings> Settings::importAsStandaloneObject(const base::ustring& path) {
  const std::optional<std::string> fileName = host::fileNameFrom(path);
  if (!fileName) {
    throw Failure<KORVEN::settings::core::FileLoadingError>(
        path, std::string("no file can have this name"));
  }
  host::ParseRules rules;
  rules.tree = host::Tree::makeStandalone();
  rules.onDoubt = host::logError;
  return host::readSettingsTree(*fileName, rules);
}

}  // namespace zlutil::settings
