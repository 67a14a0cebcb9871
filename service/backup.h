// Copies of the user level in files, and bringing one back. An option of the service beside the
// contract: a host may leave it out. Any thread; other threads and processes may read and change
// settings meanwhile.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "base/export.h"
#include "base/text.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// Writes everything that is stored for the user level of the tree, as of one moment, to a file. The
// file is replaced in one step and belongs to the user alone. Throws StoreFailure, also if the
// level is not stored, and FileLoadingError if no file can have the name.
SETTINGS_HOST_OPTION void backUpUserLevel(const boost::shared_ptr<Settings>& root,
                                          const base::ustring& file);

// Makes the user level of the tree what it was when such a file was written, as one commit of the
// history. Every process hears of the entries and values that this changes, as of the changes of
// another process; validators are not asked. Returns the name of the file that keeps the state
// before. Throws StoreFailure, with nothing changed, if the file is not a whole copy; else what
// backUpUserLevel() throws.
SETTINGS_HOST_OPTION std::string restoreUserLevel(const boost::shared_ptr<Settings>& root,
                                                  const base::ustring& file);

}  // namespace settings
}  // namespace zlutil
