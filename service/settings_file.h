// Settings files, besides the loading of a whole one (Settings::importAsStandaloneObject): writing
// a tree or a part of it to a file, and reading the values of a file into a level of a tree. The
// format is described in docs/settings-file.md. What is written comes back exactly, every value,
// its level and its type, names and validators; only a CValidator is code and is left out. All
// functions may be called from any thread.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "base/export.h"
#include "base/text.h"
#include "service/settings.h"

namespace zlutil {
namespace settings {

class SETTINGS_HOST_API SettingsFile {
 public:
  // Writes everything below the node `top`, with the values that it has at `levels`, as of one
  // moment. The file is replaced in one step, once its content is safely on the disk: a reader, or
  // a crash, finds the old content or the new one. A symbolic link stays one, and an existing file
  // keeps its mode. Throws UnSupportedLevel, NoSuchNode (no node), NotANodeName (a key),
  // StoreFailure (what the system said, or the path of a string that holds a character which XML
  // cannot).
  static void write(const boost::shared_ptr<Settings>& top, const std::vector<std::string>& levels,
                    const base::ustring& path);

  // Sets the keys below the node `top` to the values that the file has for them, at `level`, as one
  // operation: all of them or, when there is a problem, none. Of several values of a key the one in
  // effect is taken. The result is that of Settings::setMultiple; a key that the file has a value
  // for and the tree does not have is a problem. Throws FileLoadingError, SaxParseException,
  // SaxUnknownException, NoSuchNode, NotANodeName.
  static SettingsProblems read(const boost::shared_ptr<Settings>& top, const std::string& level,
                               const base::ustring& path);

  SettingsFile() = delete;
};

}  // namespace settings
}  // namespace zlutil
