// The settings of the process in memory, for tests of programs. An option of the service beside the
// contract: a host may leave it out.
#pragma once

#include "base/export.h"

namespace zlutil {
namespace settings {

// From now on keeps the settings of the process and of its sessions in memory: they begin empty, no
// file and no database is read or written, and values of all four levels can be changed. Returns
// false, and does nothing, if settings of the process have been read already. Calling it again is
// harmless. Applications (application.h) then read only the sources that they name themselves, and
// keep the user level in memory unless they name its directory. Any thread.
SETTINGS_HOST_OPTION bool keepSettingsInMemory();

}  // namespace settings
}  // namespace zlutil
