// The function by which the host finds the store of this library.
#include "base/export.h"
#include "host/shared_store/shared_store.h"

using zlutil::settings::host::MakeSharedStore;
using zlutil::settings::host::SharedStore;
using zlutil::settings::host::SharedStoreOptions;
using zlutil::settings::host::Store;

extern "C" SETTINGS_HOST_API Store* makeSharedStore(const SharedStoreOptions& options) {
  return new SharedStore(options);
}

static_assert(std::is_same_v<decltype(makeSharedStore), MakeSharedStore>);
