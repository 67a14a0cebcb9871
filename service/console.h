// The host's console. Text is narrow text and reaches standard output as standard UTF-8.
#pragma once

#include "base/export.h"

// Prints like printf and flushes. May be called from any thread; one call's text stays together.
SETTINGS_HOST_API void utPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
