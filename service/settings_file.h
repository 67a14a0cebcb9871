// Settings files, besides loading a whole one (Settings::importAsStandaloneObject): writing a tree
// or a part of it to a file, and reading the values of a file into a level of a tree.
// docs/settings-file.md describes the format. Everything that is written comes back exactly: every
// value, its level and type, names and validators. Only a CValidator is left out, because it is
// code. All functions may be called from any thread. write() is an option of the service beside the
// contract: a host may leave it out, and the bridge checks at run time whether it is there.
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
  // Writes everything below the node `top`, with its values at `levels`, as of one moment. The file
  // is replaced in one step, once its content is safely on the disk: a reader finds the old content
  // or the new one, also after a crash. A symbolic link stays one, and an existing file keeps its
  // mode. Throws UnSupportedLevel, NoSuchNode (no node), NotANodeName (a key), StoreFailure (with
  // the message of the system, or the path of a string with a character that XML cannot hold).
  SETTINGS_HOST_OPTION static void write(const boost::shared_ptr<Settings>& top,
                                         const std::vector<std::string>& levels,
                                         const base::ustring& path);

  // Sets the keys below the node `top` to the values that the file has for them, at `level`, as one
  // operation: all of them or, if there is a problem, none. Of several values of a key the
  // effective one is taken. Returns the problems as Settings::setMultiple does; a value for a key
  // that the tree does not have is one. Throws FileLoadingError, SaxParseException,
  // SaxUnknownException, NoSuchNode, NotANodeName.
  static SettingsProblems read(const boost::shared_ptr<Settings>& top, const std::string& level,
                               const base::ustring& path);

  // Returns the same text as standard UTF-8. Throws what write() throws, but for the disk.
  static std::string text(const boost::shared_ptr<Settings>& top,
                          const std::vector<std::string>& levels);

  // Returns a message for each mistake in a file, with the file's name, line and column; nothing if
  // the file is right. A mistake in the XML itself is the last one that is found. Whether a file
  // agrees with others of its level is not checked.
  static std::vector<std::string> check(const base::ustring& path);

  SettingsFile() = delete;
};

}  // namespace settings
}  // namespace zlutil
