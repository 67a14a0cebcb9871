// Visibility marks of the shared libraries. Everything is built with hidden visibility, so a symbol
// without a mark cannot be reached from outside its library.
#pragma once

// Part of the host's contract: implemented by libsettingshost or by another host.
#define SETTINGS_HOST_API __attribute__((visibility("default")))

// An option beside the host's contract: a host may leave it out. The bridge compares the function's
// address with null before it calls it.
#define SETTINGS_HOST_OPTION __attribute__((visibility("default"), weak))

// Exported by libnativesettings besides JNI_OnLoad and JNI_OnUnload.
#define NATIVESETTINGS_API __attribute__((visibility("default")))
