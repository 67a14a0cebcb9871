// What the event manager knows of the libraries that have subscribed.
#pragma once

namespace zlutil::eventmgr {

// Whether some thread, which was publishing when a subscription of that library ended, has not yet
// let go of the callback, and so may still run the code that destroys it. Any thread.
bool isLettingGo(const void* library);

}  // namespace zlutil::eventmgr
