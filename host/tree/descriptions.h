// Descriptions of entries (service/description.h). The caller holds the tree's lock().
#pragma once

#include "host/tree/entry.h"

namespace zlutil::settings::host {

// Returns the texts of files, without the constraint and the choices that a validator names.
SettingDescription ownDescriptionOf(const Entry& entry);

// Returns the whole description.
SettingDescription descriptionOf(const Entry& entry);

}  // namespace zlutil::settings::host
