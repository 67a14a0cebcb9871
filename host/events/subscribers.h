// Subscriptions of a library, for its unloading.
#pragma once

namespace zlutil::eventmgr {

// Returns whether a publishing thread still holds a callback of the library whose subscription has
// ended, and so may still run code of the library. Any thread.
bool isLettingGo(const void* library);

}  // namespace zlutil::eventmgr
