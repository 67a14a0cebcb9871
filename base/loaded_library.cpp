#include "base/loaded_library.h"

#include <dlfcn.h>

const void* base::libraryOf(const void* address) noexcept {
  dl_find_object found;
  const bool isKnown = _dl_find_object(const_cast<void*>(address), &found) == 0;
  return isKnown ? found.dlfo_map_start : nullptr;
}
