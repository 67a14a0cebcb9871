// The settings of an application that says itself where they come from. An option of the service
// beside the contract: a host may leave it out. Any thread.
//
// A source that an application names is used as it is. Where it names none, that of the process
// counts (the environment), and there the part with the application's name: the directory NAME in
// the directories of the user, the workgroup and the factory, and NAME below the prefix of a
// cluster.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <utility>
#include <vector>

#include "base/export.h"
#include "base/text.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

struct ApplicationSources {
  // A settings file: one on the disk, or its content with a name for messages (narrow text).
  struct File {
    base::ustring path;
    std::string name, content;
  };

  // ASCII letters, digits, "_", "-" and ".", first a letter or a digit, at most 63 characters. ""
  // stands for no name of its own.
  std::string name;
  base::ustring userDirectory;       // made if it does not exist
  base::ustring workgroupDirectory;  // of settings files
  std::string workgroupCluster;      // the address of a cluster, in place of a directory
  base::ustring factoryDirectory;    // of settings files
  std::vector<File> factoryFiles;    // in place of a directory; a later one has the last word
};

// Returns the root of the tree with the application's settings. The tree ends with the last
// reference to its root; until then, the same sources have the same tree. Throws ValidationFailure
// (the application's name), FileLoadingError (a source that is named and missing, or two for one
// level), SaxParseException and SaxUnknownException (a factory file that is wrong).
SETTINGS_HOST_OPTION boost::shared_ptr<Settings> openApplication(const ApplicationSources& sources);

// Sets a variable of the environment, such as SETTINGS_USERDIR, for this service only; nothing is
// changed in the environment of the process. "" takes the setting back. Trees that are there
// already stay as they are. `value` is narrow text or standard UTF-8.
SETTINGS_HOST_OPTION void overrideEnvironment(const std::string& variable,
                                              const std::string& value);

}  // namespace settings
}  // namespace zlutil
