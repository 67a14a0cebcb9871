// The host's console. Takes narrow text and prints it as standard UTF-8 to standard output.
#pragma once

#include "base/export.h"

// Prints like printf and flushes. May be called from any thread; the text of one call stays
// together.
SETTINGS_HOST_API void utPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
