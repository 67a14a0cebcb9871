// The static records of the bridge for the Java exception classes that failures are translated to,
// and the list of level names. Built when the library is loaded; the list is only read afterwards,
// the records are filled as bridge/cons_info.h says.
#pragma once

#include <string>
#include <vector>

#include "base/export.h"
#include "bridge/cons_info.h"

namespace nativesettings {

extern NATIVESETTINGS_API jzi::ConsInfo settingAccessException;
extern NATIVESETTINGS_API jzi::ConsInfo settingNotFoundException;
extern NATIVESETTINGS_API jzi::ConsInfo runtimeException;
extern NATIVESETTINGS_API jzi::ConsInfo fileNotFoundException;
extern NATIVESETTINGS_API jzi::ConsInfo settingValidationException;
extern NATIVESETTINGS_API jzi::ConsInfo settingNameDuplicationException;
extern NATIVESETTINGS_API jzi::ConsInfo settingUnsupportedTypeRuntimeException;
extern NATIVESETTINGS_API jzi::ConsInfo settingLevelRuntimeException;
extern NATIVESETTINGS_API jzi::ConsInfo illegalStateException;
extern NATIVESETTINGS_API jzi::ConsInfo unsupportedOperationException;

// Returns all level names in the service's order, highest priority first.
const std::vector<std::string>& allLevelNames();

}  // namespace nativesettings
