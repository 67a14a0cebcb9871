// Chooses the store of the user level. Any thread, but not while another thread changes the
// environment.
#pragma once

#include <memory>
#include <string>

#include "host/tree/store.h"
#include "service/context.h"

namespace zlutil::settings::host {

// Keeps the user level in memory if there is no directory. `directory` is bytes for the system.
std::shared_ptr<Store> makeUserStore(contextmgr::ZcrID context, const std::string& directory);

}  // namespace zlutil::settings::host
