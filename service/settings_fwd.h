// Names the node interface without its operations, for headers that only pass entries on.
#pragma once

namespace zlutil {
namespace settings {

class Settings;

}  // namespace settings
}  // namespace zlutil
