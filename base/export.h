// Marks what a shared library of this project shows to others. Everything is built with hidden
// visibility, so a symbol without one of these marks cannot be reached from outside its library.
#pragma once

// Part of the host's contract: implemented by libsettingshost (or by a host of one's own).
#define SETTINGS_HOST_API __attribute__((visibility("default")))

// Beside the host's contract: a host may leave it out. The bridge compares the function's address
// with null before it calls it.
#define SETTINGS_HOST_OPTION __attribute__((visibility("default"), weak))

// Part of what libnativesettings shows besides JNI_OnLoad and JNI_OnUnload.
#define NATIVESETTINGS_API __attribute__((visibility("default")))
