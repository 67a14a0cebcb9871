#include "nativesettings/frame.h"

namespace nativesettings {

thread_local bool NativeFrame::lastWasRefused_ = false;

}  // namespace nativesettings
